#pragma once

#include <algorithm>
#include <limits>

namespace ZVSmartModel {

/// How far up and down something reaches, in metres.
struct HeightRange {
    double low = std::numeric_limits<double>::infinity();  ///< above `high` while there is nothing
    double high = -std::numeric_limits<double>::infinity();

    void Add(double z) {
        low = std::min(low, z);
        high = std::max(high, z);
    }
    void Add(const HeightRange& other) {
        low = std::min(low, other.low);
        high = std::max(high, other.high);
    }
    bool IsEmpty() const { return !(low <= high); }
    /// What lies in the plane counts as above it.
    bool IsCutAt(double height) const { return low < height && height <= high; }
};

}  // namespace ZVSmartModel
