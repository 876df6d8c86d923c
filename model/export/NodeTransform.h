#pragma once

#include <array>
#include <vector>

#include "ZVSmartModel/Values.h"

namespace ZVSmartModel {

/// A node's transform as glTF takes it: scaled first, then turned, then moved.
struct NodeTransform {
    std::array<double, 3> translation = {0, 0, 0};
    std::array<double, 4> rotation = {0, 0, 0, 1};  ///< unit quaternion: x, y, z, w
    std::array<double, 3> scale = {1, 1, 1};
};

/// A finite placement as one node's transform or, where it shears, as two: the outer one first.
/// Any 3 × 3 matrix is rotation · scale · rotation (its singular values); they come from the
/// eigenvectors of MᵀM by Jacobi's method.
std::vector<NodeTransform> NodeTransformsOf(const Transform& placement);

}  // namespace ZVSmartModel
