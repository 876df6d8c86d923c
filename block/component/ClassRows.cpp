#include "component/ClassRows.h"

#include "component/ClassLevels.h"
#include "stream/FieldReader.h"

namespace ZVSmartZvg {

using ZVSmartFormat::MemoryBudget;
using ZVSmartFormat::RecordInStream;

namespace {

/// Whether neither a row of a table is asked for nor one below it.
template <class Level>
bool AreNone(const EntryRows& rows) {
    bool areNone = rows.*Level::row == ZVLG_NONE;
    ClassLevel::ForEach(typename Level::Below(),
                        [&](auto below) { areNone = areNone && AreNone<decltype(below)>(rows); });
    return areNone;
}

/// Reads the rows of one component. Each function is false where a row leads nowhere.
class RowsOfComponent {
  public:
    RowsOfComponent(RecordInStream& in, const EntryRows& rows, unsigned int version,
                    SZVLGZvgComp& comp, MemoryBudget& budget)
        : in(in), reader(in, budget), rows(rows), version(version), comp(comp) {}

    template <class Level>
    bool Read(Level /*level*/, const Section& table) {
        const u32 number = rows.*Level::row;
        if (number >= table.Count()) return AreNone<Level>(rows);
        SeekRecord(in, table, number);
        Level::VisitRow(reader, comp, version);
        return ReadBelow(typename Level::Below(), in.GetPos());
    }

  private:
    bool ReadBelow(std::tuple<> /*levels*/, u64 /*position*/) { return true; }

    /// The tables at `position`. One behind which nothing is needed is not looked at without need.
    template <class Level, class... Next>
    bool ReadBelow(std::tuple<Level, Next...> /*levels*/, u64 position) {
        if (sizeof...(Next) == 0 && rows.*Level::row == ZVLG_NONE) return AreNone<Level>(rows);
        const Section table = ReadSection(in, position);
        const bool hasNext = ReadBelow(std::tuple<Next...>(), table.End());
        return Read(Level(), table) && hasNext;
    }

    RecordInStream& in;
    ZVSmartSerial::FieldReader<RecordInStream> reader;
    const EntryRows& rows;
    unsigned int version;
    SZVLGZvgComp& comp;
};

}  // namespace

bool ResolveClassRows(RecordInStream& in, const Section& level2, const EntryRows& rows,
                      unsigned int version, SZVLGZvgComp& comp, MemoryBudget& budget) {
    return RowsOfComponent(in, rows, version, comp, budget).Read(ClassLevel::Level2(), level2);
}

}  // namespace ZVSmartZvg
