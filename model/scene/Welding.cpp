#include "model/scene/Welding.h"

#include <cmath>
#include <cstring>

namespace ZVSmartModel {

std::size_t Welding::Hash::operator()(const Cell& cell) const {
    std::uint64_t hash = 0;
    for (const std::uint64_t bits : cell) {
        hash = (hash ^ bits) * 0x9E3779B97F4A7C15;
        hash ^= hash >> 29;
    }
    return static_cast<std::size_t>(hash);
}

std::uint32_t Welding::Number(const Point& point) {
    constexpr double cellsPerMetre = 1e6;
    Cell cell;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double snapped = std::round(point[axis] * cellsPerMetre) + 0.0;  // no -0
        std::memcpy(&cell[axis], &snapped, sizeof snapped);
    }
    const auto next = static_cast<std::uint32_t>(numbers.size());
    return numbers.try_emplace(cell, next).first->second;
}

}  // namespace ZVSmartModel
