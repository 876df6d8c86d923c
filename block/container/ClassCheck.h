#pragma once

#include <map>
#include <string>
#include <type_traits>

#include "component/ClassLevels.h"
#include "container/SectionCheck.h"
#include "stream/RecordInStream.h"

namespace ZVSmartZvg {

/// Checks the classification tables and keeps how many rows they have, by which the rows that
/// components refer to are checked.
class ClassCheck {
  public:
    ClassCheck(unsigned int version, Findings& findings) : version(version), findings(findings) {}

    /// Checks the tables at `index`'s position and leaves it behind them.
    void Read(ZVSmartFormat::RecordInStream& index, const Place& place);

    /// Meets in `tally` what of `rows` leads nowhere. `component()` names who refers to them.
    /// Nothing is told of what hangs on a table or a row that did not read.
    template <class Name>
    void CheckRows(const EntryRows& rows, Name component, Tally& tally) const {
        if (!MeetBelowNone(ClassLevel::Level2(), rows, component, tally))
            CheckRow(level2, rows, component, tally);
    }

  private:
    /// A table: how many rows it has, and what is below those that read. Only these take memory,
    /// since a head may announce any number.
    template <class Level>
    struct Table {
        using Below = ClassLevel::Each<Table, typename Level::Below>;

        bool isKnown = false;
        u32 count = 0;
        std::map<u32, Below> rows;
    };

    template <class Level>
    void Read(ZVSmartFormat::RecordInStream& index, const Place& place, Table<Level>& table);

    /// Rows below none lead nowhere, whatever their number; the first one is met.
    template <class Level, class Name>
    static bool MeetBelowNone(Level /*level*/, const EntryRows& rows, Name component,
                              Tally& tally) {
        bool isMet = false;
        ClassLevel::ForEach(typename Level::Below(), [&](auto below) {
            if (isMet) return;
            const u32 row = rows.*decltype(below)::row;
            isMet = rows.*Level::row == ZVLG_NONE && row != ZVLG_NONE;
            if (!isMet) {
                isMet = MeetBelowNone(below, rows, component, tally);
                return;
            }
            tally.Meet("none", [&] {
                const std::string name = below.name;
                return component() + " refers to row " + std::to_string(row) +
                       (name.front() == 'o' ? " of an " : " of a ") + name +
                       " below a row that is none";
            });
        });
        return isMet;
    }

    template <class Level, class Name>
    static void CheckRow(const Table<Level>& table, const EntryRows& rows, Name component,
                         Tally& tally) {
        const u32 row = rows.*Level::row;
        if (!table.isKnown || row == ZVLG_NONE) return;
        if (row >= table.count) {
            constexpr bool isOutermost = std::is_same_v<Level, ClassLevel::Level2>;
            tally.Meet(Level::name, [&] {
                return component() + " refers to row " + std::to_string(row) +
                       (isOutermost ? " of the " : " of its ") + Level::name + ", which has " +
                       std::to_string(table.count);
            });
        }
        const auto found = table.rows.find(row);
        if (found == table.rows.end()) return;
        ClassLevel::ForEach(typename Level::Below(), [&](auto below) {
            CheckRow(std::get<Table<decltype(below)>>(found->second), rows, component, tally);
        });
    }

    unsigned int version;
    Findings& findings;
    Table<ClassLevel::Level2> level2;
};

}  // namespace ZVSmartZvg
