#pragma once

#include <cmath>

#include "ZVSmartModel/Values.h"
#include "ZVSmartZvg/DisplayAttr.h"

namespace ZVSmartModel {

/// What lies or leads beyond is left out: floats and their products stay finite within.
constexpr double farthest = 1e12;

/// Whether all numbers are finite and within `farthest`.
/// @{
bool IsNear(const Point& point);
bool IsNear(const Transform& placement);
/// @}

/// Where `placement` puts a point.
Point Placed(const Transform& placement, const Point& point);

/// Whether `placement` turns right into left.
bool Mirrors(const Transform& placement);

/// A record's placement as one of this library.
Transform TransformOf(const ZVSmartZvg::CZVIMTransf& transf);

/// Points as vectors.
/// @{
inline Point Minus(const Point& a, const Point& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
inline Point Cross(const Point& a, const Point& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
inline double Dot(const Point& a, const Point& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
inline double Length(const Point& a) {
    return std::sqrt(Dot(a, a));
}
/// @}

}  // namespace ZVSmartModel
