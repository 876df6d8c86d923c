#include "container/StructureCheck.h"

#include "component/FloorBlock.h"
#include "stream/CompressedBlock.h"

namespace ZVSmartZvg {

using ZVSmartFormat::CheckedInStream;

namespace {

bool HasItsWidth(const SZVLGSectionHead& head) {
    return head.tableWidth == SZVLGSectionHead::Of(0, head.tableOffset).tableWidth;
}

/// Whether the first record stands behind the head and the last one, which `passFields` passes up
/// to its block, ends at the offset table.
template <class PassFields>
bool IsFilled(CheckedInStream& in, const Section& section, PassFields passFields) {
    const u64 recordsEnd = section.position + section.head.tableOffset;
    if (section.Count() == 0) return section.head.tableOffset == SZVLGSectionHead::byteSize;
    if (ReadEntry(in, section, 0) != SZVLGSectionHead::byteSize) return false;
    u64 last = 0;
    if (!FindRecord(in, section, section.Count() - 1, last)) return false;
    in.Seek(last);
    try {
        passFields();
        const u64 block = in.GetPos();
        return block + ZVSmartFormat::LoadBigEndian<u32>(in.Take(4)) == recordsEnd;
    } catch (const ZVSmartFormat::CZVFTStreamException& damage) {
        if (ZVSmartFormat::IsLackOfMemory(damage)) throw;
        return false;
    }
}

}  // namespace

bool FindMisfit(CheckedInStream& in, const Section& geos, const Section& floors, u64 indexPosition,
                const GeoIdentTable& identifications, Misfit& misfit) {
    const auto tell = [&misfit](u64 position, const char* what, const char* reason) {
        misfit = {position, what, reason};
        return true;
    };
    constexpr const char* theGeos = "the geometry block section";
    constexpr const char* theFloors = "the floor section";
    constexpr const char* theIndex = "the index block";
    constexpr const char* width = "has offsets of a width that is not the one for its size";
    constexpr const char* ends = "has records that do not fill it";

    if (!HasItsWidth(geos.head)) return tell(geos.position, theGeos, width);
    if (!HasItsWidth(floors.head)) return tell(floors.position, theFloors, width);
    if (!IsFilled(in, geos, [] {})) return tell(geos.position, theGeos, ends);
    if (!IsFilled(in, floors, [&in] { ReadFloorFields(in); }))
        return tell(floors.position, theFloors, ends);
    in.Seek(indexPosition);
    const ZVSmartFormat::BlockFrame frame = ZVSmartFormat::ReadBlockFrame(in);
    if (frame.blockSize != frame.encodedSize + 4)
        return tell(indexPosition, theIndex, "has bytes behind its compressed data");
    if (identifications.Count() != 0 && identifications.HighestBlock() >= geos.Count())
        return tell(indexPosition, theIndex, "leads to geometry blocks that are not there");
    return false;
}

}  // namespace ZVSmartZvg
