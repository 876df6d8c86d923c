#pragma once

#include <vector>

#include "ZVSmartFormat/IniFile.h"
#include "ZVSmartFormat/Stream.h"
#include "component/ComponentFields.h"
#include "component/RowTable.h"

// The classification tables, nested indexed sections:
//   level-2 row   name, id, section of level-3 rows, section of level-2b rows
//   level-3 row   name, id, section of level-4 rows
//   level-4 row   name, id, attributes, section of owner rows
//   level-2b row  name, id, attributes

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
    struct Level4 {
        RowTable rows;
        std::vector<RowTable> owners;  // per row
    };
    struct Level3 {
        RowTable rows;
        std::vector<Level4> level4;  // per row
    };
    struct Level2 {
        RowTable rows;
        std::vector<Level3> level3;     // per row
        std::vector<RowTable> level2b;  // per row
    };

    u32 EnterLevel4(Level4& table, const SZVLGZvgComp& comp,
                    const ZVSmartFormat::CZVFTIniFile& settings);

    unsigned int version;
    RowBuffer buffer;
    Level2 level2;
};

}  // namespace ZVSmartZvg
