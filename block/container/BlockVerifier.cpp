#include "ZVSmartZvg/BlockVerifier.h"

#include <limits>

#include "component/FloorBlock.h"
#include "container/SectionCheck.h"
#include "geometry/GeoIdentTable.h"
#include "geometry/GeoSerial.h"
#include "layout/FileHead.h"
#include "stream/CheckedInStream.h"
#include "stream/CompressedBlock.h"
#include "stream/PositionGuard.h"
#include "stream/RecordInStream.h"

namespace ZVSmartZvg {

using ZVSmartFormat::CheckedInStream;
using ZVSmartFormat::CZVFTInStream;
using ZVSmartFormat::DecodedBlock;
using ZVSmartFormat::RecordInStream;
using ZVSmartSerial::FieldReader;

namespace {

/// How many rows the classification tables have, by which a component's indices are checked.
struct ClassCounts {
    struct Level2 {
        std::vector<std::vector<u32>> owners;  // per level-3 row, per level-4 row
        u32 level2b = 0;
    };
    std::vector<Level2> level2;
};

class Verification {
  public:
    Verification(CZVFTInStream& stream, Findings& findings)
        : stream(stream), in(stream), basePos(stream.GetPos()), findings(findings) {}

    /// In the file's order, but for the index block, whose tables the floors refer to.
    void Run() {
        ReadFileHead(stream, head);
        const u64 floorSectionOffset = ZVSmartFormat::LoadBigEndian<u32>(in.Take(4));
        CheckGeoBlocks();
        const u64 floorsBegin = in.GetPos();
        if (floorsBegin != basePos + floorSectionOffset)
            findings.Add(FilePosition(floorsBegin),
                         "the floor section does not begin where the geometry blocks end");
        const Section floors = ReadSection(in, basePos + floorSectionOffset);
        in.Seek(floors.End());
        CheckIndexBlock();
        const u64 end = in.GetPos();
        if (end != in.GetSize())
            findings.Add(FilePosition(end),
                         std::to_string(in.GetSize() - end) + " bytes behind the end of the file");
        in.Seek(floors.position);
        CheckFloors();
    }

  private:
    unsigned long long FilePosition(u64 position) const { return position - basePos; }
    Place FilePlace() const { return {0, false, basePos}; }

    bool ReadBlock(const std::string& what, DecodedBlock& block);
    template <class CheckContent>
    void CheckBlock(const std::string& what, CheckContent checkContent);

    void CheckGeoBlocks();
    void CheckGeoRecord(RecordInStream& content);
    void CheckIndexBlock();
    ClassCounts::Level2 CheckLevel2Row(RecordInStream& index, const Place& place);
    std::vector<u32> CheckLevel3Row(RecordInStream& index, const Place& place);
    u32 CheckLevel4Row(RecordInStream& index, const Place& place);
    void CheckIdentifications(RecordInStream& index, const Place& place);
    void CheckFloors();
    void CheckFloorBlock(RecordInStream& content, const Place& place);
    void CheckRows(const EntryRows& rows);
    void CheckRow(u32 row, std::size_t count, const char* table);

    CZVFTInStream& stream;
    CheckedInStream in;
    u64 basePos;
    Findings& findings;
    FileHead head;
    std::vector<u32> geoCounts;  // per geometry block
    ClassCounts classes;
    unsigned long long blockPosition = 0;  // of the block being checked
};

bool Verification::ReadBlock(const std::string& what, DecodedBlock& block) {
    const u64 position = in.GetPos();
    const ZVSmartFormat::BlockFrame frame = ZVSmartFormat::ReadBlockFrame(in);
    if (!ReadCompressedBlock(in, std::numeric_limits<u32>::max(), block)) {
        findings.Add(FilePosition(position), what + " does not decode");
        if (frame.blockSize != 0) in.Seek(position + frame.blockSize);
        return false;
    }
    if (frame.blockSize != frame.encodedSize + 4)
        findings.Add(FilePosition(position + 4 + frame.encodedSize),
                     what + ": bytes behind the compressed data");
    return true;
}

/// Decodes the block at the stream's position and checks what is in it, to its last byte.
template <class CheckContent>
void Verification::CheckBlock(const std::string& what, CheckContent checkContent) {
    const u64 position = in.GetPos();
    DecodedBlock block;
    if (!ReadBlock(what, block)) return;
    RecordInStream content(block.Data(), block.Size());
    blockPosition = FilePosition(position);
    const Place place{blockPosition, true, 0};
    const bool whole =
        findings.Guard(place.filePosition, what, [&] { checkContent(content, place); });
    if (whole && content.BytesLeft() != 0)
        findings.Add(place.filePosition,
                     what + ": " + std::to_string(content.BytesLeft()) + " bytes left over");
}

void Verification::CheckGeoBlocks() {
    CheckSection(in, FilePlace(), "geometry block section", findings, [&](u32 i) {
        geoCounts.resize(std::size_t{i} + 1);
        CheckBlock("geometry block " + std::to_string(i), [&](RecordInStream& content,
                                                              const Place& place) {
            const Section records = CheckSection(content, place, "geometry records", findings,
                                                 [&](u32) { CheckGeoRecord(content); });
            geoCounts[i] = records.Count();
        });
    });
}

void Verification::CheckGeoRecord(RecordInStream& content) {
    const u32 byteCount = ZVSmartFormat::LoadBigEndian<u32>(content.Take(4));
    RecordInStream record(content.Take(byteCount), byteCount);
    SZVLGZvgGeo geo;
    ReadGeo(record, geo, head.version);
    if (record.BytesLeft() != 0) throw ZVSmartFormat::CZVFTStreamException("bytes left over");
}

void Verification::CheckIndexBlock() {
    CheckBlock("the index block", [&](RecordInStream& index, const Place& place) {
        CheckSection(index, place, "level-2 table", findings, [&](u32 i) {
            classes.level2.resize(std::size_t{i} + 1);
            classes.level2[i] = CheckLevel2Row(index, place);
        });
        CheckIdentifications(index, place);
    });
}

ClassCounts::Level2 Verification::CheckLevel2Row(RecordInStream& index, const Place& place) {
    FieldReader<RecordInStream> reader(index);
    SZVLGZvgComp row;
    VisitClassName(reader, row.classLevel2Name, row.classLevel2Id);
    ClassCounts::Level2 counts;
    CheckSection(index, place, "level-3 table", findings, [&](u32 i) {
        counts.owners.resize(std::size_t{i} + 1);
        counts.owners[i] = CheckLevel3Row(index, place);
    });
    const Section level2b = CheckSection(index, place, "level-2b table", findings, [&](u32) {
        VisitClassName(reader, row.classLevel2bName, row.classLevel2bId);
        VisitDisplayAttr(reader, row.classLevel2bAttr, head.version);
    });
    counts.level2b = level2b.Count();
    return counts;
}

std::vector<u32> Verification::CheckLevel3Row(RecordInStream& index, const Place& place) {
    FieldReader<RecordInStream> reader(index);
    SZVLGZvgComp row;
    VisitClassName(reader, row.classLevel3Name, row.classLevel3Id);
    std::vector<u32> owners;
    CheckSection(index, place, "level-4 table", findings, [&](u32 i) {
        owners.resize(std::size_t{i} + 1);
        owners[i] = CheckLevel4Row(index, place);
    });
    return owners;
}

u32 Verification::CheckLevel4Row(RecordInStream& index, const Place& place) {
    FieldReader<RecordInStream> reader(index);
    SZVLGZvgComp row;
    VisitClassName(reader, row.classLevel4Name, row.classLevel4Id);
    VisitDisplayAttr(reader, row.classLevel4Attr, head.version);
    const Section owners = CheckSection(index, place, "owner table", findings,
                                        [&](u32) { VisitOwnerRow(reader, row); });
    return owners.Count();
}

void Verification::CheckIdentifications(RecordInStream& index, const Place& place) {
    const GeoIdentTable table(index);
    if (!table.WasInOrder())
        findings.Add(place.filePosition, "the identifications are not in ascending order");
    std::wstring identification;
    for (u32 i = 0; i < table.Count(); ++i) {
        SZVLGZvgGeoIndex geo;
        table.Get(i, identification, geo);
        if (geo.blockIndex >= geoCounts.size() || geo.indexInBlock >= geoCounts[geo.blockIndex])
            findings.Add(place.filePosition,
                         "identification " + std::to_string(i) + " leads to no geometry");
    }
}

void Verification::CheckFloors() {
    CheckSection(in, FilePlace(), "floor section", findings, [&](u32 i) {
        ReadFloorFields(in);
        CheckBlock(
            "the block of floor " + std::to_string(i),
            [&](RecordInStream& content, const Place& place) { CheckFloorBlock(content, place); });
    });
}

/// The rows come behind the components that refer to them: their count is looked up first.
void Verification::CheckFloorBlock(RecordInStream& content, const Place& place) {
    const Section components = ReadSection(content, 0);
    const Section geoIds = ReadSection(content, components.End());
    content.Seek(0);
    FieldReader<RecordInStream> reader(content);
    CheckSection(content, place, "component table", findings, [&](u32) {
        SZVLGZvgComp comp;
        EntryRows rows;
        ReferenceRows referenceRows;
        VisitComponentEntry(reader, comp, rows, referenceRows, head.version);
        const u64 end = content.GetPos();
        CheckRows(rows);
        for (const std::vector<u32>& numbers : referenceRows)
            for (const u32 number : numbers)
                CheckRow(number, geoIds.Count(), "the floor's identification table");
        content.Seek(end);
    });
    CheckSection(content, place, "identification table", findings, [&](u32) {
        SZVLGZvgGeoId row;
        VisitGeoIdRow(reader, row);
    });
}

void Verification::CheckRow(u32 row, std::size_t count, const char* table) {
    if (row == ZVLG_NONE || row < count) return;
    findings.Add(blockPosition, "a component refers to row " + std::to_string(row) + " of " +
                                    table + ", which has " + std::to_string(count));
}

void Verification::CheckRows(const EntryRows& rows) {
    CheckRow(rows.level2, classes.level2.size(), "the level-2 table");
    if (rows.level2 >= classes.level2.size()) return;
    const ClassCounts::Level2& level2 = classes.level2[rows.level2];
    CheckRow(rows.level2b, level2.level2b, "its level-2b table");
    CheckRow(rows.level3, level2.owners.size(), "its level-3 table");
    if (rows.level3 >= level2.owners.size()) return;
    const std::vector<u32>& level4 = level2.owners[rows.level3];
    CheckRow(rows.level4, level4.size(), "its level-4 table");
    if (rows.level4 < level4.size()) CheckRow(rows.owner, level4[rows.level4], "its owner table");
}

}  // namespace

bool CZVLGBlockVerifier::Verify(CZVFTInStream* in, std::vector<SZVLGBlockFinding>& findings) {
    Findings gathered(findings);
    const ZVSmartFormat::PositionGuard guard(*in);
    try {
        gathered.Guard(0, "the file", [&] { Verification(*in, gathered).Run(); });
    } catch (const Findings::Full&) {  // as many as are reported
    }
    return findings.empty();
}

}  // namespace ZVSmartZvg
