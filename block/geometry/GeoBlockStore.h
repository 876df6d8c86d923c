#pragma once

#include <string>
#include <vector>

#include "ZVSmartFormat/MemoryStream.h"
#include "ZVSmartZvg/Geo.h"
#include "ZVSmartZvg/GeoIndex.h"
#include "layout/SectionWriter.h"
#include "stream/BlockQueue.h"
#include "stream/Failures.h"
#include "stream/KeyTable.h"
#include "stream/RowStore.h"

// A geometry block, decoded, is one indexed section; a record of it is
//   u32  byte length
//   the bytes of a geometry record
// The identification table in the index block:
//   u32  count
//   per identification, ascending by its UTF-16 units: text, u32 block, u32 position in the block

namespace ZVSmartZvg {

/// Where a saver's geometries go. They are serialised as they come and gathered into blocks of a
/// fixed number; a full block is compressed and written when the next one begins.
class GeoBlockStore {
  public:
    /// Begins the geometry block section at `out`'s position. `out`, which throws what it cannot
    /// write, `blocks`, which write there, and `scratch` are borrowed.
    GeoBlockStore(ZVSmartFormat::CZVFTOutStream& out, ZVSmartFormat::BlockQueue& blocks,
                  ZVSmartFormat::AllocBuffer& scratch, unsigned int version, u32 geosPerBlock);

    /// Throws "encode error" once the section is finished or a block could not be written whole.
    void CheckOpen() const {
        if (closed) ZVSmartFormat::ThrowNotWritten();
    }

    /// Stores `geo` under `identification`, unless that is empty or in the current block. An
    /// identification that is known already keeps leading to its first geometry. Throws
    /// "encode error" once a block could not be written whole: the numbers of those behind it
    /// would be wrong.
    void Add(const std::wstring& identification, const SZVLGZvgGeo& geo);

    /// Stores a copy of `image` under the preview's name. False where it has no pixels or a preview
    /// is there already.
    bool AddPreview(const SZVLGZvgGeoImage& image);

    /// Whether an identification leads to a geometry; never for an empty one.
    bool Has(const std::wstring& identification) const;

    /// Queues the last block and the end of the section; nothing can be added afterwards. Throws
    /// "encode error" where it was called before or a block could not be written whole.
    void Finish();

    /// Writes the identification table to `out`.
    void WriteIdentifications(ZVSmartFormat::CZVFTOutStream& out) const;

  private:
    /// An identification by the bytes that it begins with, behind those that all begin with.
    struct KeyPlace {
        u64 leading;
        u32 number;
    };

    void WriteBlock();
    void AppendToBlock(const std::string& key, const SZVLGZvgGeo& geo);
    std::vector<KeyPlace> PlacesInKeyOrder() const;

    ZVSmartFormat::BlockQueue& blocks;
    ZVSmartFormat::AllocBuffer& scratch;
    unsigned int version;
    u32 geosPerBlock;
    SectionWriter section;

    bool closed = false;  // finished, or a block was left half-written
    u32 geoCount = 0;
    u32 currentBlock = 0;
    ZVSmartFormat::KeyTable blockKeys;  // of the current block
    ZVSmartFormat::RowStore blockRows;  // its records' bytes

    ZVSmartFormat::KeyTable keys;           // identifications as big-endian UTF-16
    std::vector<SZVLGZvgGeoIndex> indices;  // where they lead
};

}  // namespace ZVSmartZvg
