#include "container/BlockReaderImp.h"

#include <utility>

#include "component/ClassRows.h"
#include "geometry/GeoSerial.h"
#include "stream/CheckedInStream.h"
#include "stream/PositionGuard.h"
#include "stream/RecordInStream.h"

namespace ZVSmartZvg {

using ZVSmartFormat::CheckedInStream;
using ZVSmartFormat::CZVFTInStream;
using ZVSmartFormat::DecodedBlock;
using ZVSmartFormat::PositionGuard;
using ZVSmartFormat::RecordInStream;

bool CZVLGBlockReader::Imp::Init(CZVFTInStream& in, u32 geoBlockCacheLimit, u32 floorCacheLimit) {
    if (geoBlockCacheLimit != 0) geoBlocks.SetLimit(geoBlockCacheLimit);
    if (floorCacheLimit != 0) floors.SetLimit(floorCacheLimit);

    const PositionGuard guard(in);
    const u64 basePos = in.GetPos();
    ReadFileHead(in, head);
    CheckedInStream checked(in);
    if (!ReadSections(checked, basePos)) return false;
    if (!ReadIndexBlock(in)) return false;
    stream = &in;
    return true;
}

/// Leaves `in` at the index block. False where the floor section cannot be one, as in a file
/// whose writer never finished.
bool CZVLGBlockReader::Imp::ReadSections(CheckedInStream& in, u64 basePos) {
    const u64 floorSectionOffset = ZVSmartFormat::LoadBigEndian<u32>(in.Take(4));
    geoSection = ReadSection(in, in.GetPos());
    const u64 geoRecords = geoSection.position + SZVLGSectionHead::byteSize;
    if (basePos + floorSectionOffset < geoRecords) return false;
    floorSection = ReadSection(in, basePos + floorSectionOffset);
    if (!floorSection.head.IsPossible(in.GetSize() - floorSection.position)) return false;
    in.Seek(floorSection.End());
    return true;
}

bool CZVLGBlockReader::Imp::ReadIndexBlock(CZVFTInStream& in) {
    DecodedBlock decoded;
    if (!ReadCompressedBlock(in, decodedLimit, decoded)) return false;
    RecordInStream index(decoded.Data(), decoded.Size());
    const Section table = ReadSection(index, 0);
    index.Seek(table.End());
    identifications = GeoIdentTable(index);
    level2 = table;
    indexBlock = std::move(decoded);
    return true;
}

namespace {

/// Walks floor records. Hostile offsets could lead to one long record over and over, so all of
/// them together may take no more bytes than the stream has.
class FloorWalk {
  public:
    explicit FloorWalk(CheckedInStream& in) : in(in), budget(in.GetSize()) {}

    /// The fields of the record at `position`; leaves the stream at its block.
    FloorFields Read(u64 position) {
        in.Seek(position);
        FloorFields fields = ReadFloorFields(in);
        const u64 byteCount = in.GetPos() - position;
        if (byteCount > budget) ZVSmartFormat::ThrowOutOfData();
        budget -= byteCount;
        return fields;
    }

  private:
    CheckedInStream& in;
    u64 budget;
};

}  // namespace

std::vector<std::wstring> CZVLGBlockReader::Imp::AllFloorNames() {
    std::vector<std::wstring> names(floorSection.Count());
    if (stream == nullptr) return names;
    const PositionGuard guard(*stream);
    CheckedInStream in(*stream);
    FloorWalk walk(in);
    u64 position = 0;
    for (u32 i = 0; i < floorSection.Count(); ++i) {
        if (!FindRecord(in, floorSection, i, position)) ZVSmartFormat::ThrowOutOfData();
        names[i] = walk.Read(position).classLevel1Name;
    }
    return names;
}

u32 CZVLGBlockReader::Imp::EstimatedDataSize() {
    if (stream == nullptr) return 0;
    const PositionGuard guard(*stream);
    CheckedInStream in(*stream);
    FloorWalk walk(in);
    u64 total = indexBlock.Size();
    u64 position = 0;
    for (u32 i = 0; i < floorSection.Count(); ++i) {
        if (!FindRecord(in, floorSection, i, position)) continue;
        walk.Read(position);
        total += ZVSmartFormat::DecodedSizeOfBlock(in);
    }
    for (u32 i = 0; i < geoSection.Count(); ++i) {
        if (!FindRecord(in, geoSection, i, position)) continue;
        in.Seek(position);
        total += ZVSmartFormat::DecodedSizeOfBlock(in);
    }
    return static_cast<u32>(total);
}

void CZVLGBlockReader::Imp::CleanInnerBuffer() {
    geoBlocks.Clear();
    floors.Clear();
    spareProperties = PropertyList();
}

bool CZVLGBlockReader::Imp::ReadFloor(u32 floor, FloorFields& fields) {
    if (stream == nullptr || floor >= floorSection.Count()) return false;
    const PositionGuard guard(*stream);
    CheckedInStream in(*stream);
    SeekRecord(in, floorSection, floor);
    fields = ReadFloorFields(in);
    return true;
}

const FloorBlock* CZVLGBlockReader::Imp::FetchFloor(u32 floor) {
    if (stream == nullptr || floor >= floorSection.Count()) return nullptr;
    if (const FloorBlock* const cached = floors.Find(floor)) return cached;
    const PositionGuard guard(*stream);
    CheckedInStream in(*stream);
    u64 position = 0;
    if (!FindRecord(in, floorSection, floor, position)) return nullptr;
    in.Seek(position);
    FloorFields fields = ReadFloorFields(in);
    DecodedBlock decoded;
    if (!ReadCompressedBlock(in, decodedLimit, decoded)) return nullptr;
    return floors.Insert(floor, FloorBlock(std::move(fields), std::move(decoded)));
}

u32 CZVLGBlockReader::Imp::FloorCompNum(u32 floor) {
    const FloorBlock* const fetched = FetchFloor(floor);
    return fetched == nullptr ? 0 : fetched->ComponentCount();
}

bool CZVLGBlockReader::Imp::ReadComp(const SZVLGCompIndex& index, SZVLGZvgComp& comp) {
    const FloorBlock* const floor = FetchFloor(index.floorIndex);
    if (floor == nullptr || index.compIndex >= floor->ComponentCount()) return false;
    SZVLGZvgComp read;
    read.compProperties.swap(spareProperties);
    EntryRows rows;
    floor->ReadComponent(index.compIndex, head.version, read, rows);
    RecordInStream classes(indexBlock.Data(), indexBlock.Size());
    ResolveClassRows(classes, level2, rows, head.version, read);
    spareProperties.swap(comp.compProperties);
    comp = std::move(read);
    return true;
}

const GeoBlock* CZVLGBlockReader::Imp::FetchGeoBlock(u32 block) {
    if (stream == nullptr || block >= geoSection.Count()) return nullptr;
    if (const GeoBlock* const cached = geoBlocks.Find(block)) return cached;
    const PositionGuard guard(*stream);
    CheckedInStream in(*stream);
    u64 position = 0;
    if (!FindRecord(in, geoSection, block, position)) return nullptr;
    in.Seek(position);
    GeoBlock fetched;
    if (!ReadCompressedBlock(in, decodedLimit, fetched.block)) return nullptr;
    RecordInStream content(fetched.block.Data(), fetched.block.Size());
    fetched.records = ReadSection(content, 0);
    return geoBlocks.Insert(block, std::move(fetched));
}

u32 CZVLGBlockReader::Imp::GeoNumInBlock(u32 block) {
    const GeoBlock* const fetched = FetchGeoBlock(block);
    return fetched == nullptr ? 0 : fetched->records.Count();
}

bool CZVLGBlockReader::Imp::ReadGeo(const SZVLGZvgGeoIndex& index, SZVLGZvgGeo& geo) {
    const GeoBlock* const fetched = FetchGeoBlock(index.blockIndex);
    if (fetched == nullptr || index.indexInBlock >= fetched->records.Count()) return false;
    RecordInStream content(fetched->block.Data(), fetched->block.Size());
    SeekRecord(content, fetched->records, index.indexInBlock);
    const u32 byteCount = ZVSmartFormat::LoadBigEndian<u32>(content.Take(4));
    if (byteCount == 0) return false;
    RecordInStream record(content.Take(byteCount), byteCount);
    ZVSmartZvg::ReadGeo(record, geo, head.version);
    return true;
}

bool CZVLGBlockReader::Imp::ReadGeo(const std::wstring& identification, SZVLGZvgGeo& geo) {
    SZVLGZvgGeoIndex index;
    return stream != nullptr && identifications.Find(identification, index) && ReadGeo(index, geo);
}

}  // namespace ZVSmartZvg
