#include "model/plan/FloorLevels.h"

#include <algorithm>
#include <cmath>

namespace ZVSmartModel {

FloorLevels::FloorLevels(const std::vector<PlanHeights>& heights) : heights(heights) {
    for (std::size_t plan = 0; plan < heights.size(); ++plan) {
        if (!heights[plan].hasViews) continue;
        planes.push_back(heights[plan].plane);
        (std::isfinite(heights[plan].plane) ? byPlane : fromAbove).push_back(plan);
    }
    std::sort(planes.begin(), planes.end());
    planes.erase(std::unique(planes.begin(), planes.end()), planes.end());
    std::stable_sort(byPlane.begin(), byPlane.end(), [&](std::size_t a, std::size_t b) {
        return heights[a].plane < heights[b].plane;
    });
}

std::vector<std::size_t> FloorLevels::Seeing(const HeightRange& reach) const {
    const auto first = std::partition_point(byPlane.begin(), byPlane.end(), [&](std::size_t plan) {
        return heights[plan].next <= reach.low;
    });
    const auto end = std::partition_point(first, byPlane.end(), [&](std::size_t plan) {
        return std::min(heights[plan].bottom, heights[plan].plane) <= reach.high;
    });
    std::vector<std::size_t> seeing(first, end);
    seeing.insert(seeing.end(), fromAbove.begin(), fromAbove.end());
    std::sort(seeing.begin(), seeing.end());
    return seeing;
}

}  // namespace ZVSmartModel
