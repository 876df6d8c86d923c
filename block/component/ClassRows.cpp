#include "component/ClassRows.h"

#include "stream/FieldReader.h"

namespace ZVSmartZvg {

using ZVSmartFormat::MemoryBudget;
using ZVSmartFormat::RecordInStream;

namespace {

using RowReader = ZVSmartSerial::FieldReader<RecordInStream>;

/// Moves to row `number` of a table; false where there is no such row.
bool SeekRow(RecordInStream& in, const Section& table, u32 number) {
    if (number >= table.Count()) return false;
    SeekRecord(in, table, number);
    return true;
}

/// Whether none of these rows is asked for.
template <class... Rows>
bool AreNone(Rows... rows) {
    return ((rows == ZVLG_NONE) && ...);
}

bool ResolveLevel4(RecordInStream& in, const Section& level4, const EntryRows& rows,
                   unsigned int version, SZVLGZvgComp& comp, MemoryBudget& budget) {
    if (!SeekRow(in, level4, rows.level4)) return false;
    RowReader reader(in, budget);
    VisitClassName(reader, comp.classLevel4Name, comp.classLevel4Id);
    VisitDisplayAttr(reader, comp.classLevel4Attr, version);
    if (rows.owner == ZVLG_NONE) return true;
    if (!SeekRow(in, ReadSection(in, in.GetPos()), rows.owner)) return false;
    VisitOwnerRow(reader, comp);
    return true;
}

bool ResolveLevel3(RecordInStream& in, const Section& level3, const EntryRows& rows,
                   unsigned int version, SZVLGZvgComp& comp, MemoryBudget& budget) {
    if (!SeekRow(in, level3, rows.level3)) return AreNone(rows.level3, rows.level4, rows.owner);
    RowReader reader(in, budget);
    VisitClassName(reader, comp.classLevel3Name, comp.classLevel3Id);
    if (rows.level4 == ZVLG_NONE) return rows.owner == ZVLG_NONE;
    return ResolveLevel4(in, ReadSection(in, in.GetPos()), rows, version, comp, budget);
}

}  // namespace

bool ResolveClassRows(RecordInStream& in, const Section& level2, const EntryRows& rows,
                      unsigned int version, SZVLGZvgComp& comp, MemoryBudget& budget) {
    if (!SeekRow(in, level2, rows.level2))
        return AreNone(rows.level2, rows.level3, rows.level4, rows.owner, rows.level2b);
    RowReader reader(in, budget);
    VisitClassName(reader, comp.classLevel2Name, comp.classLevel2Id);
    const Section level3 = ReadSection(in, in.GetPos());
    bool hasLevel2b = rows.level2b == ZVLG_NONE;
    if (!hasLevel2b && SeekRow(in, ReadSection(in, level3.End()), rows.level2b)) {
        VisitClassName(reader, comp.classLevel2bName, comp.classLevel2bId);
        VisitDisplayAttr(reader, comp.classLevel2bAttr, version);
        hasLevel2b = true;
    }
    return ResolveLevel3(in, level3, rows, version, comp, budget) && hasLevel2b;
}

}  // namespace ZVSmartZvg
