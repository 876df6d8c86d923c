#pragma once

#include <map>
#include <string>

#include "component/ComponentFields.h"
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
    void CheckRows(const EntryRows& rows, Name component, Tally& tally) const;

  private:
    /// A table: how many rows it has, and those that read. Only these take memory, since a head may
    /// announce any number.
    template <class Row>
    struct Table {
        bool isKnown = false;
        u32 count = 0;
        std::map<u32, Row> rows;

        const Row* Find(u32 row) const {
            const auto found = rows.find(row);
            return found == rows.end() ? nullptr : &found->second;
        }
    };
    struct Owner {};
    struct Level4 {
        Table<Owner> owners;
    };
    struct Level3 {
        Table<Level4> level4;
    };
    struct Level2b {};
    struct Level2 {
        Table<Level3> level3;
        Table<Level2b> level2b;
    };

    Level2 ReadLevel2Row(ZVSmartFormat::RecordInStream& index, const Place& place);
    Level3 ReadLevel3Row(ZVSmartFormat::RecordInStream& index, const Place& place);
    Level4 ReadLevel4Row(ZVSmartFormat::RecordInStream& index, const Place& place);

    unsigned int version;
    Findings& findings;
    Table<Level2> level2;
};

template <class Name>
void ClassCheck::CheckRows(const EntryRows& rows, Name component, Tally& tally) const {
    const auto refers = [&](u32 row, const char* table) {
        return component() + " refers to row " + std::to_string(row) + " of " + table;
    };
    // Whether a table has `row`; what it does not have and is not none either is told.
    const auto has = [&](const auto& table, u32 row, const char* name) {
        if (!table.isKnown || row == ZVLG_NONE) return false;
        if (row < table.count) return true;
        tally.Meet(
            name, [&] { return refers(row, name) + ", which has " + std::to_string(table.count); });
        return false;
    };
    // Rows below none lead nowhere, whatever their number.
    const auto isBelowNone = [&](u32 above, u32 row, const char* name) {
        if (above != ZVLG_NONE || row == ZVLG_NONE) return false;
        tally.Meet("none", [&] { return refers(row, name) + " below a row that is none"; });
        return true;
    };
    if (isBelowNone(rows.level2, rows.level2b, "a level-2b table")) return;
    if (isBelowNone(rows.level2, rows.level3, "a level-3 table")) return;
    if (isBelowNone(rows.level3, rows.level4, "a level-4 table")) return;
    if (isBelowNone(rows.level4, rows.owner, "an owner table")) return;
    if (!has(level2, rows.level2, "the level-2 table")) return;
    const Level2* const row2 = level2.Find(rows.level2);
    if (row2 == nullptr) return;
    has(row2->level2b, rows.level2b, "its level-2b table");
    if (!has(row2->level3, rows.level3, "its level-3 table")) return;
    const Level3* const row3 = row2->level3.Find(rows.level3);
    if (row3 == nullptr || !has(row3->level4, rows.level4, "its level-4 table")) return;
    const Level4* const row4 = row3->level4.Find(rows.level4);
    if (row4 != nullptr) has(row4->owners, rows.owner, "its owner table");
}

}  // namespace ZVSmartZvg
