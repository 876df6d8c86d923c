#include "model/scene/PointMath.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace ZVSmartModel {

namespace {

template <class Numbers>
bool AreNear(const Numbers& numbers) {
    return std::all_of(numbers.begin(), numbers.end(), [](double value) {
        return std::fabs(value) <= farthest;  // false for NaN
    });
}

}  // namespace

bool IsNear(const Point& point) {
    return AreNear(point);
}

bool IsNear(const Transform& placement) {
    return AreNear(placement);
}

Point Placed(const Transform& placement, const Point& point) {
    Point result;
    for (std::size_t row = 0; row < 3; ++row) {
        const double* const r = placement.data() + row * 4;
        result[row] = r[0] * point[0] + r[1] * point[1] + r[2] * point[2] + r[3];
    }
    return result;
}

bool Mirrors(const Transform& p) {
    return p[0] * (p[5] * p[10] - p[6] * p[9]) - p[1] * (p[4] * p[10] - p[6] * p[8]) +
               p[2] * (p[4] * p[9] - p[5] * p[8]) <
           0;
}

Transform TransformOf(const ZVSmartZvg::CZVIMTransf& transf) {
    Transform placement;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 4; ++column) {
            placement[static_cast<std::size_t>(row * 4 + column)] = transf.GetAt(row, column);
        }
    }
    return placement;
}

}  // namespace ZVSmartModel
