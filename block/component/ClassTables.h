#pragma once

#include <vector>

#include "ZVSmartFormat/IniFile.h"
#include "ZVSmartFormat/Stream.h"
#include "component/ClassLevels.h"
#include "component/RowTable.h"

namespace ZVSmartZvg {

/// The tables that all components of a file share, while it is written.
class ClassTables {
  public:
    explicit ClassTables(unsigned int version) : version(version) {}

    /// Finds or inserts what `comp` says of levels 2 to 4, 2b and its owner, and tells the rows.
    /// A new level-4 row gets its z-buffer size from `settings` where it brings none.
    EntryRows Enter(const SZVLGZvgComp& comp, const ZVSmartFormat::CZVFTIniFile& settings);

    /// Writes the level-2 section to `out`.
    void Write(ZVSmartFormat::CZVFTOutStream& out) const;

  private:
    template <class Level>
    struct Table;
    template <class Level>
    using TablePerRow = std::vector<Table<Level>>;
    template <class Level>
    struct Table {
        RowTable rows;
        ClassLevel::Each<TablePerRow, typename Level::Below> below;
    };

    template <class Level>
    void Enter(Table<Level>& table, const SZVLGZvgComp& comp,
               const ZVSmartFormat::CZVFTIniFile& settings, EntryRows& numbers);
    template <class Level>
    std::string_view MakeRow(const SZVLGZvgComp& comp, const ZVSmartFormat::CZVFTIniFile& settings);
    template <class Level>
    static void Write(const Table<Level>& table, ZVSmartFormat::CZVFTOutStream& out);

    unsigned int version;
    RowBuffer buffer;
    Table<ClassLevel::Level2> level2;
};

}  // namespace ZVSmartZvg
