#include "container/BlockReaderImp.h"

#include <algorithm>
#include <utility>

#include "component/ClassRows.h"
#include "geometry/GeoSerial.h"
#include "stream/CheckedInStream.h"
#include "stream/PositionGuard.h"
#include "stream/RecordInStream.h"
#include "stream/WideText.h"

namespace ZVSmartZvg {

using ZVSmartFormat::CheckedInStream;
using ZVSmartFormat::DecodedBlock;
using ZVSmartFormat::ListMemory;
using ZVSmartFormat::MemoryBudget;
using ZVSmartFormat::PositionGuard;
using ZVSmartFormat::RecordInStream;

/// What looks like damage is none where the stream kept back what it has.
void CZVLGBlockReader::Imp::SettleMiss() {
    if (last.Kind() != EZVLGMiss::None && stream.HasFailed())
        last.NoteUnread(stream.FailedAt() - basePos);
}

EZVLGMiss CZVLGBlockReader::Imp::TellLastMiss(SZVLGBlockFinding& finding) const {
    last.Tell(finding);
    return last.Kind();
}

bool CZVLGBlockReader::Imp::TellStructure(SZVLGBlockFinding& finding) const {
    if (openMiss.Kind() != EZVLGMiss::Damaged) return false;
    openMiss.Tell(finding);
    return true;
}

/// Notes where records may hide behind a section's count.
void CZVLGBlockReader::Imp::CheckCount(const Section& section) {
    if (!section.isWhole) last.NoteDamaged("has a count that its size contradicts");
}

/// Notes that a number is beyond a section's count; false, as the answer is.
bool CZVLGBlockReader::Imp::NoteBeyond(const Section& section) {
    CheckCount(section);
    if (section.isWhole) last.NoteAbsent();
    return false;
}

namespace {

LastMiss::Subject FloorSubject(u32 floor) {
    return {"floor", floor};
}
LastMiss::Subject GeoBlockSubject(u32 block) {
    return {"geometry block", block};
}

// What a distant stream is asked for beyond what is read. With the 8 KiB that a request may bring
// for its ends' sake, opening a file and reading an element and its body stay below 128 KiB of
// that.
constexpr u64 smallFile = 128 << 10;  ///< comes in one request
constexpr u64 headBytes = 8 << 10;
constexpr u64 shapesBytes = 64 << 10;  ///< what bodies place stands ahead of them, most times near
constexpr u64 entriesBytes = 8;        ///< where a record begins, and the next
constexpr u64 fieldsBytes = 1024;      ///< of a floor, most times

}  // namespace

/// Tells a distant stream what is about to be read.
void CZVLGBlockReader::Imp::Expect(u64 position, u64 byteCount) {
    if (distant != nullptr) distant->Expect(position, byteCount);
}

/// The same of the file's head.
void CZVLGBlockReader::Imp::ExpectHead() {
    if (distant == nullptr) return;
    const u64 size = distant->GetSize();
    const u64 left = basePos < size ? size - basePos : 0;
    Expect(basePos, left <= smallFile ? left : headBytes);
}

/// The same of the offset table of a section, and what is between it and `end`.
void CZVLGBlockReader::Imp::ExpectTable(const Section& section, u64 end) {
    const u64 table = section.EntryPosition(0);
    if (end > table) Expect(table, end - table);
}

/// The same of record `i` of a section, which is at `position` and ends where the next one begins,
/// and of so many bytes of the records ahead of it, or behind it where there are none.
void CZVLGBlockReader::Imp::ExpectRecord(CheckedInStream& in, const Section& section, u32 i,
                                         u64 position, u64 ahead) {
    if (distant == nullptr) return;
    u64 end = section.EntryPosition(0);
    if (i + 1 < section.Count()) FindRecord(in, section, i + 1, end);
    if (end <= position || distant->Holds(position, end - position)) return;
    const u64 before = std::min(position - section.position, ahead);
    const u64 behind = std::min(section.EntryPosition(0) - end, ahead - before);
    Expect(position - before, before + end - position + behind);
}

/// Decodes the block at `in`'s position, and notes it where it does not decode.
bool CZVLGBlockReader::Imp::ReadBlock(CheckedInStream& in, const LastMiss::Subject& subject,
                                      DecodedBlock& block) {
    last.LookAt(in.GetPos() - basePos, subject);
    if (ReadCompressedBlock(in, decodedLimit, block)) return true;
    if (ZVSmartFormat::DecodedSizeOfBlock(in) > decodedLimit) {
        last.NoteTooLarge("decodes to more than the limit");
    } else {
        last.NoteDamaged("does not decode");
    }
    return false;
}

namespace {

/// Walks floor records. Hostile offsets could lead to one long record over and over, so all of
/// them together may take no more bytes than the stream has.
class FloorWalk {
  public:
    explicit FloorWalk(CheckedInStream& in) : in(in), budget(in.GetSize()) {}

    /// The fields of the record at `position`; leaves the stream at its block.
    FloorFields Read(u64 position, MemoryBudget& memory) {
        in.Seek(position);
        FloorFields fields = ReadFloorFields(in, memory);
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

u32 CZVLGBlockReader::Imp::FloorNum() {
    return AskOpen(floorSection.Count(), [&] {
        last.LookAt(floorSection.position - basePos, theFloorSection);
        CheckCount(floorSection);
        return floorSection.Count();
    });
}

std::vector<std::wstring> CZVLGBlockReader::Imp::AllFloorNames() {
    return AskOpen(std::vector<std::wstring>(floorSection.Count()), [&] {
        std::vector<std::wstring> names;
        MemoryBudget memory(recordLimit);
        if (!memory.Take(ListMemory(floorSection.Count(), sizeof(std::wstring))))
            throw ZVSmartFormat::OverLimit();
        names.reserve(floorSection.Count());
        const PositionGuard guard(stream);
        CheckedInStream in(stream);
        FloorWalk walk(in);
        u64 position = 0;
        for (u32 i = 0; i < floorSection.Count(); ++i) {
            last.LookAt(floorSection.position - basePos, FloorSubject(i));
            if (!FindRecord(in, floorSection, i, position)) ZVSmartFormat::ThrowOutOfData();
            names.push_back(walk.Read(position, memory).classLevel1Name);
        }
        last.LookAt(floorSection.position - basePos, theFloorSection);
        CheckCount(floorSection);
        return names;
    });
}

u32 CZVLGBlockReader::Imp::EstimatedDataSize() {
    return AskOpen(u32{0}, [&] { return SumDecodedSizes(); });
}

u32 CZVLGBlockReader::Imp::SumDecodedSizes() {
    const PositionGuard guard(stream);
    CheckedInStream in(stream);
    FloorWalk walk(in);
    u64 total = indexBlock.Size();
    const auto addBlock = [&] {
        last.LookAt(in.GetPos() - basePos, last.LookedAt());
        const u32 size = ZVSmartFormat::DecodedSizeOfBlock(in);
        if (size == 0) last.NoteDamaged("does not tell its decoded size");
        total += size;
    };
    const auto find = [&](const Section& section, u32 i, const LastMiss::Subject& subject,
                          u64& position) {
        last.LookAt(section.position - basePos, subject);
        const bool isThere = FindRecord(in, section, i, position);
        if (!isThere) last.NoteDamaged("is not where its section says");
        return isThere;
    };
    u64 position = 0;
    for (u32 i = 0; i < floorSection.Count(); ++i) {
        if (!find(floorSection, i, FloorSubject(i), position)) continue;
        MemoryBudget memory(recordLimit);
        walk.Read(position, memory);
        addBlock();
    }
    for (u32 i = 0; i < geoSection.Count(); ++i) {
        if (!find(geoSection, i, GeoBlockSubject(i), position)) continue;
        in.Seek(position);
        addBlock();
    }
    return static_cast<u32>(total);
}

namespace {

/// Reads the i-th of a geometry block's records; false where it has no bytes.
bool ReadGeoRecord(const DecodedBlock& block, const Section& records, u32 i, u32 version,
                   u64 mostMemory, SZVLGZvgGeo& geo) {
    RecordInStream content(block.Data(), block.Size());
    SeekRecord(content, records, i);
    const u32 byteCount = ZVSmartFormat::LoadBigEndian<u32>(content.Take(4));
    if (byteCount == 0) return false;
    RecordInStream record(content.Take(byteCount), byteCount);
    ReadGeo(record, geo, version, mostMemory);
    return true;
}

}  // namespace

void CZVLGBlockReader::Imp::SetReadAhead(unsigned int threads, bool geometry,
                                         const GeoBlockUse& use) {
    walk.reset();
    if (!ZVSmartFormat::hasThreads || threads <= 1 || !isOpen) return;
    walk = std::make_unique<WalkAhead>(std::min(threads, ZVSmartFormat::mostCoders), decodedLimit);
    if (use) {
        walk->geoBlocks.use = [use, &ahead = *walk, version = head.version, most = recordLimit](
                                  u32 number, const DecodedBlock& block) {
            RecordInStream content(block.Data(), block.Size());
            const Section records = ReadSection(content, 0);
            use(number, records.Count(), [&](u32 i, SZVLGZvgGeo& geo) {
                return !ahead.IsEnding() && i < records.Count() &&
                       ReadGeoRecord(block, records, i, version, most, geo);
            });
        };
    }
    const PositionGuard guard(stream);
    CheckedInStream in(stream);
    if (geometry) walk->Begin(in, walk->geoBlocks, [&](u32 i) { return SeekGeoBlock(in, i); });
    walk->Begin(in, walk->floors, [&](u32 i) { return SeekFloor(in, i); });
}

/// Moves `in` to the block of floor `floor`; false where it is decoded, or is not there.
bool CZVLGBlockReader::Imp::SeekFloor(CheckedInStream& in, u32 floor) {
    u64 position = 0;
    if (floor >= floorSection.Count() || floors.Holds(floor)) return false;
    if (!FindRecord(in, floorSection, floor, position)) return false;
    in.Seek(position);
    MemoryBudget memory(recordLimit);
    ReadFloorFields(in, memory);
    return true;
}

/// The same of a geometry block.
bool CZVLGBlockReader::Imp::SeekGeoBlock(CheckedInStream& in, u32 block) {
    u64 position = 0;
    if (block >= geoSection.Count() || geoBlocks.Holds(block)) return false;
    if (!FindRecord(in, geoSection, block, position)) return false;
    in.Seek(position);
    return true;
}

/// Begins to decode floors behind one that is about to be decoded. What is wrong there is met by
/// who asks for it.
void CZVLGBlockReader::Imp::LookAheadOfFloor(CheckedInStream& in, u32 floor) {
    walk->LookAhead(in, walk->floors, floor, [&](u32 next) { return SeekFloor(in, next); });
    stream.ForgetFailure();
}

/// The same of geometry blocks.
void CZVLGBlockReader::Imp::LookAheadOfGeoBlock(CheckedInStream& in, u32 block) {
    walk->LookAhead(in, walk->geoBlocks, block, [&](u32 next) { return SeekGeoBlock(in, next); });
    stream.ForgetFailure();
}

void CZVLGBlockReader::Imp::CleanInnerBuffer() {
    walk.reset();
    geoBlocks.Clear();
    floors.Clear();
    propertyMemory = PropertyList();
}

bool CZVLGBlockReader::Imp::ReadFloor(u32 floor, FloorFields& fields) {
    return AskOpen(false, [&] {
        last.LookAt(floorSection.position - basePos, FloorSubject(floor));
        if (floor >= floorSection.Count()) return NoteBeyond(floorSection);
        const PositionGuard guard(stream);
        CheckedInStream in(stream);
        Expect(floorSection.EntryPosition(floor), entriesBytes);
        SeekRecord(in, floorSection, floor);
        Expect(in.GetPos(), fieldsBytes);
        MemoryBudget memory(recordLimit);
        fields = ReadFloorFields(in, memory);
        return true;
    });
}

const PlacedFloor* CZVLGBlockReader::Imp::FetchFloor(u32 floor, MemoryBudget& memory) {
    last.LookAt(floorSection.position - basePos, FloorSubject(floor));
    if (floor >= floorSection.Count()) return NoteBeyond(floorSection), nullptr;
    if (const PlacedFloor* const cached = floors.Find(floor, ++uses)) return cached;
    const PositionGuard guard(stream);
    CheckedInStream in(stream);
    if (IsReadAhead()) LookAheadOfFloor(in, floor);
    Expect(floorSection.EntryPosition(floor), entriesBytes);
    u64 position = 0;
    if (!FindRecord(in, floorSection, floor, position)) {
        last.NoteDamaged("is not where its section says");
        return nullptr;
    }
    ExpectRecord(in, floorSection, floor, position, 0);
    in.Seek(position);
    FloorFields fields = ReadFloorFields(in, memory);
    position = in.GetPos() - basePos;
    DecodedBlock decoded;
    const bool isThere = IsReadAhead() && WalkAhead::Take(walk->floors, floor, decoded);
    if (!isThere && !ReadBlock(in, FloorSubject(floor), decoded)) return nullptr;
    const u64 byteCount = decoded.Size();
    const PlacedFloor* const inserted = floors.Insert(
        floor, {FloorBlock(std::move(fields), std::move(decoded)), position}, byteCount, ++uses);
    KeepWithinBytes();
    return inserted;
}

/// The block that was used last stays, however large, and a last floor beside geometry blocks: who
/// reads bodies goes back and forth between the two.
void CZVLGBlockReader::Imp::KeepWithinBytes() {
    if (mostCached == 0) return;
    while (floors.Bytes() + geoBlocks.Bytes() > mostCached) {
        const bool keepsFloor = floors.IsEmpty() || floors.IsSingle();
        const u64 ofFloors = keepsFloor ? uses : floors.OldestUse();
        const u64 ofGeoBlocks = geoBlocks.IsEmpty() ? uses : geoBlocks.OldestUse();
        if (std::min(ofFloors, ofGeoBlocks) == uses) return;
        if (ofFloors < ofGeoBlocks) {
            floors.DropOldest();
        } else {
            geoBlocks.DropOldest();
        }
    }
}

u32 CZVLGBlockReader::Imp::FloorCompNum(u32 floor) {
    return AskOpen(u32{0}, [&]() -> u32 {
        MemoryBudget memory(recordLimit);
        const PlacedFloor* const fetched = FetchFloor(floor, memory);
        if (fetched == nullptr) return 0;
        last.LookAt(fetched->position, FloorSubject(floor));
        CheckCount(fetched->floor.Components());
        return fetched->floor.ComponentCount();
    });
}

bool CZVLGBlockReader::Imp::ReadComp(const SZVLGCompIndex& index, const SZVLGCompParts& parts,
                                     SZVLGZvgComp& comp) {
    return AskOpen(false, [&] { return FetchComp(index, parts, comp); });
}

bool CZVLGBlockReader::Imp::ReadView(const SZVLGCompIndex& index, const SZVLGCompParts& parts,
                                     SZVLGCompView& view) {
    view.byteCount = 0;
    return AskOpen(false, [&] { return FetchView(index, parts, view); });
}

const WantedProperties& CZVLGBlockReader::Imp::Wanted(const SZVLGCompParts& parts) {
    if (nameEnd != parts.propertyNameEnd) {
        storedNameEnd.clear();
        ZVSmartFormat::AppendUtf16(parts.propertyNameEnd, storedNameEnd);
        nameEnd = parts.propertyNameEnd;
    }
    wanted = {parts.properties, storedNameEnd};
    return wanted;
}

const FloorBlock* CZVLGBlockReader::Imp::FetchFloorOf(const SZVLGCompIndex& index,
                                                      MemoryBudget& memory) {
    const PlacedFloor* const fetched = FetchFloor(index.floorIndex, memory);
    if (fetched == nullptr) return nullptr;
    last.LookAt(fetched->position, {"floor", index.floorIndex, "component", index.compIndex});
    if (index.compIndex < fetched->floor.ComponentCount()) return &fetched->floor;
    NoteBeyond(fetched->floor.Components());
    return nullptr;
}

namespace {

constexpr const char* noSuchRow = "refers to an identification row that is not there";

}  // namespace

bool CZVLGBlockReader::Imp::FetchComp(const SZVLGCompIndex& index, const SZVLGCompParts& parts,
                                      SZVLGZvgComp& comp) {
    MemoryBudget memory(recordLimit);
    const FloorBlock* const floor = FetchFloorOf(index, memory);
    if (floor == nullptr) return false;
    SZVLGZvgComp read;
    read.compProperties.swap(propertyMemory);
    EntryRows rows;
    const bool hasAllRows =
        floor->ReadComponent(index.compIndex, head.version, Wanted(parts), read, rows, memory);
    if (!hasAllRows) last.NoteDamaged(noSuchRow);
    last.LookAt(indexPosition,
                {"a class row of floor", index.floorIndex, "component", index.compIndex});
    RecordInStream classes(indexBlock.Data(), indexBlock.Size());
    if (!ResolveClassRows(classes, level2, rows, head.version, read, memory))
        last.NoteDamaged("is not there");
    propertyMemory.swap(comp.compProperties);
    comp = std::move(read);
    return true;
}

bool CZVLGBlockReader::Imp::FetchView(const SZVLGCompIndex& index, const SZVLGCompParts& parts,
                                      SZVLGCompView& view) {
    MemoryBudget memory(recordLimit);
    const FloorBlock* const floor = FetchFloorOf(index, memory);
    if (floor == nullptr) return false;
    if (!floor->ReadView(index.compIndex, head.version, Wanted(parts), view, memory))
        last.NoteDamaged(noSuchRow);
    return true;
}

u32 CZVLGBlockReader::Imp::GeoBlockNum() {
    return AskOpen(geoSection.Count(), [&] {
        last.LookAt(geoSection.position - basePos, theGeoSection);
        CheckCount(geoSection);
        return geoSection.Count();
    });
}

const GeoBlock* CZVLGBlockReader::Imp::FetchGeoBlock(u32 block) {
    last.LookAt(geoSection.position - basePos, GeoBlockSubject(block));
    if (block >= geoSection.Count()) return NoteBeyond(geoSection), nullptr;
    if (const GeoBlock* const cached = geoBlocks.Find(block, ++uses)) return cached;
    const PositionGuard guard(stream);
    CheckedInStream in(stream);
    if (IsReadAhead()) LookAheadOfGeoBlock(in, block);
    Expect(geoSection.EntryPosition(block), entriesBytes);
    u64 position = 0;
    if (!FindRecord(in, geoSection, block, position)) {
        last.NoteDamaged("is not where its section says");
        return nullptr;
    }
    ExpectRecord(in, geoSection, block, position, shapesBytes);
    in.Seek(position);
    GeoBlock fetched;
    fetched.position = position - basePos;
    const bool isThere = IsReadAhead() && WalkAhead::Take(walk->geoBlocks, block, fetched.block);
    if (!isThere && !ReadBlock(in, GeoBlockSubject(block), fetched.block)) return nullptr;
    RecordInStream content(fetched.block.Data(), fetched.block.Size());
    fetched.records = ReadSection(content, 0);
    const u64 byteCount = fetched.block.Size();
    const GeoBlock* const inserted = geoBlocks.Insert(block, std::move(fetched), byteCount, ++uses);
    KeepWithinBytes();
    return inserted;
}

u32 CZVLGBlockReader::Imp::GeoNumInBlock(u32 block) {
    return AskOpen(u32{0}, [&]() -> u32 {
        const GeoBlock* const fetched = FetchGeoBlock(block);
        if (fetched == nullptr) return 0;
        last.LookAt(fetched->position, GeoBlockSubject(block));
        CheckCount(fetched->records);
        return fetched->records.Count();
    });
}

bool CZVLGBlockReader::Imp::ReadGeo(const SZVLGZvgGeoIndex& index, SZVLGZvgGeo& geo) {
    return AskOpen(false, [&] { return FetchGeo(index, geo); });
}

bool CZVLGBlockReader::Imp::FetchGeo(const SZVLGZvgGeoIndex& index, SZVLGZvgGeo& geo) {
    const GeoBlock* const fetched = FetchGeoBlock(index.blockIndex);
    if (fetched == nullptr) return false;
    last.LookAt(fetched->position,
                {"geometry block", index.blockIndex, "record", index.indexInBlock});
    if (index.indexInBlock >= fetched->records.Count()) return NoteBeyond(fetched->records);
    if (ReadGeoRecord(fetched->block, fetched->records, index.indexInBlock, head.version,
                      recordLimit, geo))
        return true;
    return last.NoteAbsent(), false;
}

bool CZVLGBlockReader::Imp::ReadGeo(const std::wstring& identification, SZVLGZvgGeo& geo) {
    return AskOpen(false, [&] { return FetchGeo(identification, geo); });
}

bool CZVLGBlockReader::Imp::FetchGeo(const std::wstring& identification, SZVLGZvgGeo& geo) {
    SZVLGZvgGeoIndex index;
    if (!identifications.Find(identification, index)) return last.NoteAbsent(), false;
    if (FetchGeo(index, geo)) return true;
    if (last.Kind() == EZVLGMiss::Absent) {
        last.Clear();
        last.LookAt(indexPosition, theIndexBlock);
        last.NoteDamaged("has an identification that leads to no stored geometry");
    }
    return false;
}

bool CZVLGBlockReader::Imp::ReadPreview(SZVLGZvgGeoImage& image) {
    return AskOpen(false, [&] {
        SZVLGZvgGeo record;
        if (!FetchGeo(previewIdentification, record)) return false;
        if (record.images.empty()) return last.NoteAbsent(), false;
        image = std::move(record.images.front());
        return true;
    });
}

u32 CZVLGBlockReader::Imp::IdentificationNum() {
    return AskOpen(u32{0}, [&] { return identifications.Count(); });
}

bool CZVLGBlockReader::Imp::ReadIdentification(u32 i, std::wstring& identification,
                                               SZVLGZvgGeoIndex& index) {
    return AskOpen(false, [&] {
        if (i >= identifications.Count()) return last.NoteAbsent(), false;
        identifications.Get(i, identification, index);
        return true;
    });
}

}  // namespace ZVSmartZvg
