#include "container/ClassCheck.h"

#include "container/IdentityCheck.h"

namespace ZVSmartZvg {

using ZVSmartFormat::RecordInStream;
using ZVSmartSerial::FieldReader;

namespace {

/// Checks the table at `index`'s position into `table`; `visit(i, identities)` reads a row and
/// meets what identifies it.
template <class Table, class Visit>
void CheckTable(RecordInStream& index, const Place& place, const char* what, Findings& findings,
                Table& table, Visit visit) {
    const u64 start = index.GetPos();
    Identities identities;
    const Section section = CheckSection(index, place, what, findings,
                                         [&](u32 i) { table.rows[i] = visit(i, identities); });
    identities.Tell(
        place.Of(start), [&] { return place.Name(what, start); }, findings);
    table.count = section.Count();
    table.isKnown = true;
}

}  // namespace

void ClassCheck::Read(RecordInStream& index, const Place& place) {
    FieldReader<RecordInStream> reader(index);
    const auto readRow = [&](u32 i, Identities& identities) {
        SZVLGZvgComp row;
        VisitClassName(reader, row.classLevel2Name, row.classLevel2Id);
        identities.Meet(i, NameKey(row.classLevel2Name));
        return ReadLevel2Row(index, place);
    };
    CheckTable(index, place, "level-2 table", findings, level2, readRow);
}

/// What is behind the row's name and id; so do the next two.
ClassCheck::Level2 ClassCheck::ReadLevel2Row(RecordInStream& index, const Place& place) {
    FieldReader<RecordInStream> reader(index);
    Level2 level;
    const auto readLevel3 = [&](u32 i, Identities& identities) {
        SZVLGZvgComp row;
        VisitClassName(reader, row.classLevel3Name, row.classLevel3Id);
        identities.Meet(i, NameKey(row.classLevel3Name));
        return ReadLevel3Row(index, place);
    };
    const auto readLevel2b = [&](u32 i, Identities& identities) {
        SZVLGZvgComp row;
        VisitClassName(reader, row.classLevel2bName, row.classLevel2bId);
        VisitDisplayAttr(reader, row.classLevel2bAttr, version);
        identities.Meet(i, NameKey(row.classLevel2bName));
        return Level2b();
    };
    CheckTable(index, place, "level-3 table", findings, level.level3, readLevel3);
    CheckTable(index, place, "level-2b table", findings, level.level2b, readLevel2b);
    return level;
}

ClassCheck::Level3 ClassCheck::ReadLevel3Row(RecordInStream& index, const Place& place) {
    FieldReader<RecordInStream> reader(index);
    Level3 level;
    const auto readLevel4 = [&](u32 i, Identities& identities) {
        SZVLGZvgComp row;
        VisitClassName(reader, row.classLevel4Name, row.classLevel4Id);
        VisitDisplayAttr(reader, row.classLevel4Attr, version);
        identities.Meet(i, NameKey(row.classLevel4Name));
        return ReadLevel4Row(index, place);
    };
    CheckTable(index, place, "level-4 table", findings, level.level4, readLevel4);
    return level;
}

ClassCheck::Level4 ClassCheck::ReadLevel4Row(RecordInStream& index, const Place& place) {
    FieldReader<RecordInStream> reader(index);
    Level4 level;
    const auto readOwner = [&](u32 i, Identities& identities) {
        SZVLGZvgComp row;
        VisitOwnerRow(reader, row);
        identities.Meet(i, row.ownerGuidName);
        return Owner();
    };
    CheckTable(index, place, "owner table", findings, level.owners, readOwner);
    return level;
}

}  // namespace ZVSmartZvg
