#pragma once

#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ZVSmartFormat/Stream.h"
#include "ZVSmartModel/Error.h"
#include "ZVSmartZvg/BlockSaver.h"
#include "model/element/FileSink.h"
#include "model/element/NewFile.h"

namespace ZVSmartModel {

/// Writes records as a block file, which under a path appears whole or not at all. The first
/// records wait until enough of them are seen to choose how many geometries a block takes.
///
/// Calls throw what the saver and streams throw; `ErrorOf` tells what that means.
class RecordWriter {
  public:
    struct Settings {
        ZVSmartZvg::SZVLGZvgBlockHeadInfo head;
        unsigned int formatVersion = 4;
        unsigned int geosPerBlock = 0;  ///< 0 chooses
        bool fast = false;
        bool seal = false;
    };

    RecordWriter(const std::string& path, const Settings& settings);
    /// `out` is borrowed until `Finish` returns.
    RecordWriter(ZVSmartFormat::CZVFTOutStream& out, const Settings& settings);
    ~RecordWriter();
    RecordWriter(const RecordWriter&) = delete;
    RecordWriter& operator=(const RecordWriter&) = delete;

    /// `recordBytes` are about those that the geometry takes in a decoded block.
    void AddGeo(const std::wstring& key, ZVSmartZvg::SZVLGZvgGeo geo, std::size_t recordBytes);
    /// `recordBytes` are those of the geometry that it brings; 0 for none.
    void AddComp(ZVSmartZvg::SZVLGZvgComp comp, std::size_t recordBytes);
    void AddPreview(ZVSmartZvg::SZVLGZvgGeoImage image);
    /// Call it once, at the end.
    void Finish();

    /// Why a call failed: Usage where a record is more than a block file holds, and is not stored,
    /// though others may be; InputOutput or Internal where nothing more can be written.
    Error ErrorOf(const std::exception& exception) const;

  private:
    class NotingStream;
    using Step = std::function<void(ZVSmartZvg::CZVLGBlockSaver&)>;

    void Take(Step step, std::size_t heldBytes, std::size_t recordBytes);
    void Begin();

    Settings settings;
    std::string path;  ///< empty for a stream of the host's
    std::unique_ptr<NewFile> file;
    std::unique_ptr<FileSink> sink;
    std::unique_ptr<NotingStream> stream;
    ZVSmartZvg::CZVLGBlockSaver saver;

    bool begun = false;
    std::vector<Step> waiting;
    std::size_t heldBytes = 0, recordBytes = 0, records = 0;
};

}  // namespace ZVSmartModel
