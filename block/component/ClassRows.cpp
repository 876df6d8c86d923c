#include "component/ClassRows.h"

#include "stream/FieldReader.h"

namespace ZVSmartZvg {

using ZVSmartFormat::RecordInStream;

namespace {

using RowReader = ZVSmartSerial::FieldReader<RecordInStream>;

/// Moves to row `number` of a table; false where there is no such row.
bool SeekRow(RecordInStream& in, const Section& table, u32 number) {
    if (number >= table.Count()) return false;
    SeekRecord(in, table, number);
    return true;
}

void ResolveLevel4(RecordInStream& in, const Section& level4, const EntryRows& rows,
                   unsigned int version, SZVLGZvgComp& comp) {
    if (!SeekRow(in, level4, rows.level4)) return;
    RowReader reader(in);
    VisitClassName(reader, comp.classLevel4Name, comp.classLevel4Id);
    VisitDisplayAttr(reader, comp.classLevel4Attr, version);
    if (rows.owner == ZVLG_NONE) return;
    if (SeekRow(in, ReadSection(in, in.GetPos()), rows.owner)) VisitOwnerRow(reader, comp);
}

void ResolveLevel3(RecordInStream& in, const Section& level3, const EntryRows& rows,
                   unsigned int version, SZVLGZvgComp& comp) {
    if (!SeekRow(in, level3, rows.level3)) return;
    RowReader reader(in);
    VisitClassName(reader, comp.classLevel3Name, comp.classLevel3Id);
    if (rows.level4 != ZVLG_NONE)
        ResolveLevel4(in, ReadSection(in, in.GetPos()), rows, version, comp);
}

}  // namespace

void ResolveClassRows(RecordInStream& in, const Section& level2, const EntryRows& rows,
                      unsigned int version, SZVLGZvgComp& comp) {
    if (!SeekRow(in, level2, rows.level2)) return;
    RowReader reader(in);
    VisitClassName(reader, comp.classLevel2Name, comp.classLevel2Id);
    const Section level3 = ReadSection(in, in.GetPos());
    if (rows.level2b != ZVLG_NONE && SeekRow(in, ReadSection(in, level3.End()), rows.level2b)) {
        VisitClassName(reader, comp.classLevel2bName, comp.classLevel2bId);
        VisitDisplayAttr(reader, comp.classLevel2bAttr, version);
    }
    ResolveLevel3(in, level3, rows, version, comp);
}

}  // namespace ZVSmartZvg
