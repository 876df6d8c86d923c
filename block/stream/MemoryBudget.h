#pragma once

#include <algorithm>

#include "ZVSmartFormat/Stream.h"

// What records take in memory once they are read: told once for the reader that must not take more
// than it may, and for the saver that must not write what no reader would take.

namespace ZVSmartFormat {

/// What the records read in one call may take unless a host says otherwise. The largest record of
/// an ordinary model takes a few MiB.
constexpr u64 defaultRecordMemory = 256ULL << 20;

/// What an allocation costs beside its bytes, and what a walk over nested records remembers of
/// one.
constexpr u64 perAllocation = 64;

/// A list of `count` elements; of no more than 32 bits can count.
constexpr u64 ListMemory(u64 count, u64 elementBytes) {
    return count == 0 ? 0 : perAllocation + count * elementBytes;
}

/// A text of so many UTF-16 units. The shortest lie in the text's own object.
constexpr u64 TextMemory(u64 unitCount) {
    constexpr u64 unitsInPlace = 3;
    return unitCount <= unitsInPlace ? 0 : ListMemory(unitCount, sizeof(wchar_t));
}

/// An object with up to four lists of its own, whose serial form with their counts takes
/// `storedBytes`.
constexpr u64 ObjectMemory(u64 storedBytes) {
    constexpr u64 mostLists = 4;
    constexpr u64 fewestPerList = 8;
    return std::min(mostLists, storedBytes / fewestPerList) * perAllocation + storedBytes;
}

/// Memory that may still be taken.
class MemoryBudget {
  public:
    explicit MemoryBudget(u64 bytes = defaultRecordMemory) : left(bytes) {}

    /// False, with nothing taken, where less is left.
    bool Take(u64 bytes) {
        if (bytes > left) return false;
        left -= bytes;
        return true;
    }

    u64 Left() const { return left; }

  private:
    u64 left;
};

}  // namespace ZVSmartFormat
