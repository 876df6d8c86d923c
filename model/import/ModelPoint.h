#pragma once

#include <cmath>
#include <compare>

namespace ZVSmartModel {

/// No model reaches farther, in metres; beyond, doubles tell no millimetres apart either.
constexpr double farthestCoordinate = 1e11;

/// Neither infinite nor no number at all.
inline bool IsCoordinate(double value) {
    return std::abs(value) <= farthestCoordinate;
}

/// A point in metres, or a direction.
struct ModelPoint {
    double x = 0, y = 0, z = 0;

    friend auto operator<=>(const ModelPoint&, const ModelPoint&) = default;
};

}  // namespace ZVSmartModel
