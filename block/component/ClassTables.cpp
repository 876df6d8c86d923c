#include "component/ClassTables.h"

#include <tuple>
#include <type_traits>

#include "component/DisplacementSettings.h"
#include "component/IdentityKey.h"

namespace ZVSmartZvg {

using ZVSmartFormat::CZVFTIniFile;
using ZVSmartFormat::CZVFTOutStream;
using ZVSmartSerial::FieldWriter;

namespace {

/// The table below row `number`. The list of them may be behind the rows after a throw.
template <class Below>
Below& GrownTableBelow(std::vector<Below>& tables, u32 number) {
    if (tables.size() <= number) tables.resize(std::size_t{number} + 1);
    return tables[number];
}

}  // namespace

EntryRows ClassTables::Enter(const SZVLGZvgComp& comp, const CZVFTIniFile& settings) {
    EntryRows numbers;
    Enter(level2, comp, settings, numbers);
    return numbers;
}

template <class Level>
void ClassTables::Enter(Table<Level>& table, const SZVLGZvgComp& comp, const CZVFTIniFile& settings,
                        EntryRows& numbers) {
    const u32 number = table.rows.FindOrAdd(IdentityKey(Level::Identity(comp)),
                                            [&] { return MakeRow<Level>(comp, settings); });
    numbers.*Level::row = number;
    const auto enter = [&](auto&... below) {
        (Enter(GrownTableBelow(below, number), comp, settings, numbers), ...);
    };
    std::apply(enter, table.below);
}

template <class Level>
std::string_view ClassTables::MakeRow(const SZVLGZvgComp& comp, const CZVFTIniFile& settings) {
    const auto fill = [this](const SZVLGZvgComp& row) {
        return buffer.Fill([&](FieldWriter& writer) { Level::VisitRow(writer, row, version); });
    };
    if constexpr (std::is_same_v<Level, ClassLevel::Level4>) {
        SZVLGZvgComp row;
        row.classLevel4Name = comp.classLevel4Name;
        row.classLevel4Id = comp.classLevel4Id;
        row.classLevel4Attr = comp.classLevel4Attr;
        ApplyDisplacement(settings, row.classLevel4Name, row.classLevel4Attr);
        return fill(row);
    } else {
        return fill(comp);
    }
}

void ClassTables::Write(CZVFTOutStream& out) const {
    Write(level2, out);
}

template <class Level>
void ClassTables::Write(const Table<Level>& table, CZVFTOutStream& out) {
    WriteRowSection(out, table.rows, [&](u32 i) {
        const auto write = [&](const auto&... below) { (Write(TableBelow(below, i), out), ...); };
        std::apply(write, table.below);
    });
}

}  // namespace ZVSmartZvg
