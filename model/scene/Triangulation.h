#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "model/element/Budget.h"

namespace ZVSmartModel {

/// Cuts a polygon into triangles by clipping ears (Meisters 1975) in the plane that Newell's
/// normal gives; each triangle holds positions in `polygon` and turns as the polygon does. A
/// polygon that crosses itself, or has more than 1000 corners, becomes a fan; fewer than three
/// corners give none. Takes time that grows with the square of the corners, up to that number; it
/// is charged to `limits`.
std::vector<std::array<std::size_t, 3>> Triangulate(
    const std::vector<std::array<double, 3>>& polygon, Budget& limits);

/// Whether four corners all turn the same way in that plane: then the polygon is cut between the
/// second and the last, as Triangulate does it, and there is nothing to search for.
bool IsConvexQuad(const std::array<std::array<double, 3>, 4>& corners);

}  // namespace ZVSmartModel
