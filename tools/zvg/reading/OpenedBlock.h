#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "ZVSmartFormat/Stream.h"
#include "ZVSmartFormat/StreamException.h"
#include "ZVSmartZvg/BlockReader.h"
#include "tools/zvg/Command.h"

/// An input file, opened; "-" is standard input, which may not be a terminal. Throws ToolError
/// InputOutput where it cannot be, Usage for a terminal.
class OpenedFile {
  public:
    explicit OpenedFile(const std::string& path);

    ZVSmartFormat::CZVFTInStream& Stream() { return *stream; }
    /// As messages name it.
    const std::string& Path() const { return path; }

  private:
    std::string path;
    std::unique_ptr<ZVSmartFormat::CZVFTInStream> stream;
};

/// A block file, opened for queries. What is wrong with the file becomes a ToolError that names
/// the file, the place in it and the reason.
///
/// Components and floors that cannot be read are remembered, so that a command can show what is
/// readable before `ThrowIfDamaged` ends it.
class OpenedBlock {
  public:
    /// Throws ToolError InputOutput for a file that cannot be opened, Damaged for one that is no
    /// block file or has no readable index.
    explicit OpenedBlock(const std::string& path);

    ZVSmartZvg::CZVLGBlockReader& Reader() { return reader; }
    const std::string& Path() const { return file.Path(); }
    unsigned long long FileBytes() { return file.Stream().GetSize(); }

    /// The floor that `text` names: by its number where there is a floor with that number, else
    /// by its name. Throws ToolError NotFound.
    unsigned int FindFloor(const std::string& text);

    /// The first floor and the one behind the last: of all, or of the one that is named.
    std::pair<unsigned int, unsigned int> FindFloors(const std::optional<std::string>& text);

    /// The number of components on a floor. A floor whose components cannot be decoded counts 0
    /// and is remembered as damage.
    unsigned int FloorCompNum(unsigned int floor);
    /// The number of geometries in a block, as above.
    unsigned int GeoNumInBlock(unsigned int block);

    /// Reads the component at `index`, which is within the floor's number of components. False,
    /// remembered as damage, where it cannot be read.
    bool ReadComp(const ZVSmartZvg::SZVLGCompIndex& index, ZVSmartZvg::SZVLGZvgComp& comp);
    /// Hands every readable component of a floor to `use(index, comp)`, in order.
    template <class Use>
    void ForEachComp(unsigned int floor, Use use) {
        ZVSmartZvg::SZVLGZvgComp comp;
        const unsigned int count = FloorCompNum(floor);
        for (unsigned int position = 0; position < count; ++position) {
            const ZVSmartZvg::SZVLGCompIndex index{floor, position};
            if (ReadComp(index, comp)) use(index, comp);
        }
    }
    /// Reads a geometry that is within the block's number of geometries. Throws ToolError Damaged.
    void ReadGeo(const ZVSmartZvg::SZVLGZvgGeoIndex& index, ZVSmartZvg::SZVLGZvgGeo& geo);
    /// Reads the preview image; nothing where there is none.
    std::optional<ZVSmartZvg::SZVLGZvgGeoImage> ReadPreview();

    /// Throws ToolError Damaged for what was remembered, if anything was.
    void ThrowIfDamaged() const;

    /// A ToolError about this file.
    ToolError Error(ExitStatus status, const std::string& reason) const;

  private:
    void RememberDamage(const std::string& reason);
    void CheckEmpty(const std::string& what);

    OpenedFile file;
    ZVSmartZvg::CZVLGBlockReader reader;
    std::string firstDamage;
    unsigned long long damages = 0;
    bool emptinessChecked = false;
};

/// What is wrong with a file, as the exception that is being handled tells; throws it on where
/// memory ran out, which says nothing about the file.
std::string DamageOf(const ZVSmartFormat::CZVFTStreamException& exception);

/// "FLOOR:POS" or "BLOCK:POS".
std::string PlaceText(unsigned int table, unsigned int position);

/// `text` as a number that is written in digits alone and fits 32 bits.
std::optional<unsigned int> ParseNumber(std::string_view text);
