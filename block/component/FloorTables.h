#pragma once

#include <vector>

#include "ZVSmartFormat/MemoryStream.h"
#include "component/ComponentFields.h"
#include "component/RowTable.h"
#include "stream/BlockQueue.h"

// A floor record:
//   its fields (ComponentFields.h)
//   a compressed block; decoded: the section of component entries, then the section of
//   identification rows

namespace ZVSmartZvg {

/// The floors of a file, while it is written, and their components as stored bytes.
class FloorTables {
  public:
    explicit FloorTables(unsigned int version) : version(version) {}

    /// The number of the component's floor, which is added where it is new. A floor without a
    /// name goes by "none".
    u32 Enter(const SZVLGZvgComp& comp);

    /// Whether the floor has a component of the same identity.
    bool HasComponent(u32 floor, const SZVLGZvgComp& comp) const;

    /// What the identification rows of a component would take in memory when they are read with
    /// it: at most, and closely where that is above `limit`.
    u64 GeoIdMemory(const SZVLGZvgComp& comp, u64 limit) const;

    /// Stores a component that is new on its floor: its entry and the identification rows of
    /// its references.
    void AddComponent(u32 floor, const SZVLGZvgComp& comp, const EntryRows& rows);

    /// Queues the floor section in `blocks`, which write to `out`; both throw what they cannot
    /// write. Blocks are built in `scratch`. All but that must live until the queue is finished.
    void Write(ZVSmartFormat::CZVFTOutStream& out, ZVSmartFormat::BlockQueue& blocks,
               ZVSmartFormat::AllocBuffer& scratch) const;

  private:
    struct Floor {
        RowTable components;
        RowTable geoIds;
    };

    u32 EnterGeoId(Floor& floor, const SZVLGZvgGeoId& row);
    std::vector<u32> EnterReference(Floor& floor, const SZVLGZvgCompGeoRef& reference);

    unsigned int version;
    u64 longestGeoId = 0;  // of any floor's rows, in stored bytes
    RowBuffer buffer;
    RowTable fields;            // of the floors
    std::vector<Floor> floors;  // as many, or one fewer after a throw
};

}  // namespace ZVSmartZvg
