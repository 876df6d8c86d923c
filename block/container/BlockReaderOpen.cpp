#include "container/BlockReaderImp.h"

#include <utility>

#include "component/FloorBlock.h"
#include "stream/CheckedInStream.h"
#include "stream/CompressedBlock.h"
#include "stream/PositionGuard.h"
#include "stream/RecordInStream.h"

// How a reader opens a file: its head, its two sections, its index block, and whether they fit.

namespace ZVSmartZvg {

using ZVSmartFormat::CheckedInStream;
using ZVSmartFormat::CZVFTInStream;
using ZVSmartFormat::CZVFTStreamException;
using ZVSmartFormat::DecodedBlock;
using ZVSmartFormat::PositionGuard;
using ZVSmartFormat::RecordInStream;

/// Forgets all about a file, so that nothing of it is served or touched again.
void CZVLGBlockReader::Imp::Close() {
    isOpen = false;
    stream.Watch(nullptr);
    distant = nullptr;
    head = FileHead();
    geoSection = floorSection = level2 = Section();
    identifications = GeoIdentTable();
    indexBlock = DecodedBlock();
    CleanInnerBuffer();
}

bool CZVLGBlockReader::Imp::Init(CZVFTInStream& in, u32 geoBlockCacheLimit, u32 floorCacheLimit) {
    Close();
    mostCached = cacheBytes;
    const auto limit = [this](u32 given, u32 usual) {
        return mostCached != 0 ? ZVLG_NONE : given != 0 ? given : usual;
    };
    geoBlocks = DecodedCache<GeoBlock>(limit(geoBlockCacheLimit, 3));
    floors = DecodedCache<PlacedFloor>(limit(floorCacheLimit, 5));
    stream.Watch(&in);
    distant = dynamic_cast<ZVSmartFormat::CZVFTCachedInStream*>(&in);
    const auto finish = [this] {
        openMiss = last;
        if (isOpen) return true;
        stream.Watch(nullptr);  // it may be gone before the next query
        distant = nullptr;
        return false;
    };
    try {
        isOpen = Ask([&] { return Open(); });
    } catch (...) {
        finish();
        throw;
    }
    return finish();
}

/// Throws where not even the head can be read; whatever is wrong behind it is false.
bool CZVLGBlockReader::Imp::Open() {
    const PositionGuard guard(stream);
    basePos = stream.GetPos();
    last.LookAt(0, theHead);
    ExpectHead();
    ReadFileHead(stream, head);
    try {
        CheckedInStream in(stream);
        if (!ReadSections(in) || !ReadIndexBlock(in)) return false;
        CheckStructure(in);
        return true;
    } catch (const CZVFTStreamException& damage) {
        if (ZVSmartFormat::IsLackOfMemory(damage)) throw;
        last.NoteDamaged("is damaged");
        return false;
    }
}

/// Leaves `in` at the index block. False where the floor section cannot be one, as in a file
/// whose writer never finished.
bool CZVLGBlockReader::Imp::ReadSections(CheckedInStream& in) {
    const u64 floorSectionPos = basePos + ZVSmartFormat::LoadBigEndian<u32>(in.Take(4));
    last.LookAt(in.GetPos() - basePos, theGeoSection);
    geoSection = ReadSection(in, in.GetPos());
    CheckCount(geoSection);
    last.LookAt(floorSectionPos - basePos, theFloorSection);
    ExpectTable(geoSection, floorSectionPos + SZVLGSectionHead::byteSize);
    if (floorSectionPos >= geoSection.position + SZVLGSectionHead::byteSize) {
        floorSection = ReadSection(in, floorSectionPos);
        if (floorSection.head.IsPossible(in.GetSize() - floorSection.position)) {
            CheckCount(floorSection);
            if (floorSectionPos != geoSection.End())
                last.NoteDamaged("does not begin where the geometry blocks end");
            ExpectTable(floorSection, in.GetSize());
            in.Seek(floorSection.End());
            return true;
        }
    }
    last.NoteDamaged("is not there");
    return false;
}

bool CZVLGBlockReader::Imp::ReadIndexBlock(CheckedInStream& in) {
    indexPosition = in.GetPos() - basePos;
    DecodedBlock decoded;
    if (!ReadBlock(in, theIndexBlock, decoded)) return false;
    RecordInStream index(decoded.Data(), decoded.Size());
    const Section table = ReadSection(index, 0);
    index.Seek(table.End());
    identifications = GeoIdentTable(index);
    level2 = table;
    indexBlock = std::move(decoded);
    return true;
}

namespace {

bool HasItsWidth(const SZVLGSectionHead& head) {
    return head.tableWidth == SZVLGSectionHead::Of(0, head.tableOffset).tableWidth;
}

}  // namespace

/// Whether the first record stands behind the head and the last one, which `passFields` passes up
/// to its block, ends at the offset table. A last record that is not there yet costs a distant
/// stream no request: it passes.
template <class PassFields>
bool CZVLGBlockReader::Imp::IsFilled(CheckedInStream& in, const Section& section,
                                     PassFields passFields) {
    const u64 recordsEnd = section.EntryPosition(0);
    if (section.Count() == 0) return section.head.tableOffset == SZVLGSectionHead::byteSize;
    if (ReadEntry(in, section, 0) != SZVLGSectionHead::byteSize) return false;
    u64 record = 0;
    if (!FindRecord(in, section, section.Count() - 1, record)) return false;
    if (distant != nullptr && !distant->Holds(record, recordsEnd - record)) return true;
    in.Seek(record);
    try {
        passFields();
        const u64 block = in.GetPos();
        return block + ZVSmartFormat::LoadBigEndian<u32>(in.Take(4)) == recordsEnd;
    } catch (const ZVSmartFormat::CZVFTStreamException& damage) {
        if (ZVSmartFormat::IsLackOfMemory(damage)) throw;
        return false;
    }
}

/// Notes where the parts that were read contradict each other, as far as a few small reads tell,
/// however large the file is; it opens all the same.
void CZVLGBlockReader::Imp::CheckStructure(CheckedInStream& in) {
    constexpr const char* width = "has offsets of a width that is not the one for its size";
    constexpr const char* ends = "has records that do not fill it";
    const auto note = [this](u64 position, const LastMiss::Subject& subject, const char* reason) {
        last.LookAt(position, subject);
        last.NoteDamaged(reason);
    };
    const u64 geosPosition = geoSection.position - basePos;
    const u64 floorsPosition = floorSection.position - basePos;
    if (!HasItsWidth(geoSection.head)) return note(geosPosition, theGeoSection, width);
    if (!HasItsWidth(floorSection.head)) return note(floorsPosition, theFloorSection, width);
    if (!IsFilled(in, geoSection, [] {})) return note(geosPosition, theGeoSection, ends);
    if (!IsFilled(in, floorSection, [&in] { ReadFloorFields(in); }))
        return note(floorsPosition, theFloorSection, ends);
    in.Seek(basePos + indexPosition);
    const ZVSmartFormat::BlockFrame frame = ZVSmartFormat::ReadBlockFrame(in);
    if (frame.blockSize != frame.encodedSize + 4)
        return note(indexPosition, theIndexBlock, "has bytes behind its compressed data");
    if (identifications.Count() != 0 && identifications.HighestBlock() >= geoSection.Count())
        note(indexPosition, theIndexBlock, "leads to geometry blocks that are not there");
}

}  // namespace ZVSmartZvg
