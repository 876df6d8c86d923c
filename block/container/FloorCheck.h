#pragma once

#include <map>

#include "container/ClassCheck.h"
#include "container/IdentityCheck.h"
#include "geometry/GeoIdentTable.h"
#include "stream/MemoryBudget.h"

namespace ZVSmartZvg {

/// Checks the block of one floor: its components, its identification rows, and where they lead.
class FloorCheck {
  public:
    /// `identifications` is null where the file's are not known.
    FloorCheck(unsigned int version, const ClassCheck& classes,
               const GeoIdentTable* identifications, Findings& findings)
        : version(version),
          classes(classes),
          identifications(identifications),
          findings(findings) {}

    /// Checks `content`, the block's decoded bytes, and leaves it behind its two tables. Returns
    /// the number of components.
    u32 Run(ZVSmartFormat::RecordInStream& content, const Place& place);

  private:
    /// An identification row as a component meets it.
    struct Row {
        u64 memory = 0;  // that its texts take
        bool leadsToGeo = false;
    };

    void ReadRows(ZVSmartFormat::RecordInStream& content, const Place& place);
    void ReadComponents(ZVSmartFormat::RecordInStream& content, const Place& place);
    void ChargeRows(const ReferenceRows& references, ZVSmartFormat::MemoryBudget& memory) const;
    template <class Name>
    void CheckReferences(const ReferenceRows& references, Name component);

    unsigned int version;
    const ClassCheck& classes;
    const GeoIdentTable* identifications;
    Findings& findings;
    u32 rowCount = 0;
    std::map<u32, Row> rows;  // those that read
    Tally tally;
};

}  // namespace ZVSmartZvg
