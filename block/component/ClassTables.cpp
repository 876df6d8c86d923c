#include "component/ClassTables.h"

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
    numbers.level2 = level2.rows.FindOrAdd(NameKey(comp.classLevel2Name), [&] {
        return buffer.Fill([&](FieldWriter& writer) {
            VisitClassName(writer, comp.classLevel2Name, comp.classLevel2Id);
        });
    });

    Level3& level3 = GrownTableBelow(level2.level3, numbers.level2);
    numbers.level3 = level3.rows.FindOrAdd(NameKey(comp.classLevel3Name), [&] {
        return buffer.Fill([&](FieldWriter& writer) {
            VisitClassName(writer, comp.classLevel3Name, comp.classLevel3Id);
        });
    });

    Level4& level4 = GrownTableBelow(level3.level4, numbers.level3);
    numbers.level4 = EnterLevel4(level4, comp, settings);

    RowTable& owners = GrownTableBelow(level4.owners, numbers.level4);
    numbers.owner = owners.FindOrAdd(IdentityKey(comp.ownerGuidName), [&] {
        return buffer.Fill([&](FieldWriter& writer) { VisitOwnerRow(writer, comp); });
    });

    RowTable& level2b = GrownTableBelow(level2.level2b, numbers.level2);
    numbers.level2b = level2b.FindOrAdd(NameKey(comp.classLevel2bName), [&] {
        return buffer.Fill([&](FieldWriter& writer) {
            VisitClassName(writer, comp.classLevel2bName, comp.classLevel2bId);
            VisitDisplayAttr(writer, comp.classLevel2bAttr, version);
        });
    });
    return numbers;
}

u32 ClassTables::EnterLevel4(Level4& table, const SZVLGZvgComp& comp,
                             const CZVFTIniFile& settings) {
    return table.rows.FindOrAdd(NameKey(comp.classLevel4Name), [&] {
        SZVLGZvgDisplayAttr attr = comp.classLevel4Attr;
        ApplyDisplacement(settings, comp.classLevel4Name, attr);
        return buffer.Fill([&](FieldWriter& writer) {
            VisitClassName(writer, comp.classLevel4Name, comp.classLevel4Id);
            VisitDisplayAttr(writer, attr, version);
        });
    });
}

void ClassTables::Write(CZVFTOutStream& out) const {
    WriteRowSection(out, level2.rows, [&](u32 i) {
        const Level3& level3 = TableBelow(level2.level3, i);
        WriteRowSection(out, level3.rows, [&](u32 j) {
            const Level4& level4 = TableBelow(level3.level4, j);
            WriteRowSection(out, level4.rows,
                            [&](u32 k) { WriteRowSection(out, TableBelow(level4.owners, k)); });
        });
        WriteRowSection(out, TableBelow(level2.level2b, i));
    });
}

}  // namespace ZVSmartZvg
