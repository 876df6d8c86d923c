#include "component/ComponentMemory.h"

#include "component/ClassLevels.h"
#include "geometry/MemoryMeter.h"

namespace ZVSmartZvg {

namespace {

// A component is read with its floor's name, twice, and five class rows, whichever of that name
// were stored first.
constexpr u64 mostOfClassRow = 8ULL << 20;
constexpr u64 mostOfComponent = ZVSmartFormat::defaultRecordMemory - 8 * mostOfClassRow;

/// Per reference as many rows as it brings, and the one that may be added.
class RowCounts {
  public:
    explicit RowCounts(const SZVLGZvgComp& comp) : comp(comp) {}

    struct Count {
        std::size_t count;
        std::size_t size() const { return count; }
    };
    const Count& operator[](std::size_t i) {
        current.count = comp.geoRefs[i].geoIds.size() + 1;
        return current;
    }

  private:
    const SZVLGZvgComp& comp;
    Count current = {};
};

template <class Visit>
u64 Measure(u64 limit, Visit visit) {
    const u64 bytes = MeasureMemory(limit, visit);
    if (bytes > limit) ZVSmartFormat::ThrowNotWritten();
    return bytes;
}

void CheckClassRows(const SZVLGZvgComp& comp, unsigned int version) {
    const auto check = [](auto visit) { Measure(mostOfClassRow, visit); };
    check([&](MemoryMeter& meter) { VisitFloorFields(meter, comp); });
    const auto checkLevel = [&](const auto& self, auto level) -> void {
        check([&](MemoryMeter& meter) { level.VisitRow(meter, comp, version); });
        ClassLevel::ForEach(typename decltype(level)::Below(),
                            [&](auto below) { self(self, below); });
    };
    checkLevel(checkLevel, ClassLevel::Level2());
}

}  // namespace

void CheckComponentMemory(const SZVLGZvgComp& comp, const FloorTables& floors,
                          unsigned int version) {
    CheckClassRows(comp, version);
    const u64 own = Measure(mostOfComponent, [&](MemoryMeter& meter) {
        const EntryRows rows;
        RowCounts rowCounts(comp);
        VisitComponentEntry(meter, comp, rows, rowCounts, version);
    });
    const u64 left = mostOfComponent - own;
    if (floors.GeoIdMemory(comp, left) > left) ZVSmartFormat::ThrowNotWritten();
}

}  // namespace ZVSmartZvg
