#pragma once

#include <pybind11/pybind11.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ZVSmartModel/Body.h"

namespace ZVSmartModel::Python {

namespace py = pybind11;

/// A body in one piece: the surfaces behind each other, and for each triangle how it looks.
struct ElementMesh {
    explicit ElementMesh(Body body);

    std::vector<Point> points;
    std::vector<std::array<std::uint32_t, 3>> triangles;
    std::vector<std::array<float, 3>> normals;
    std::vector<Look> looks;
    std::vector<std::uint32_t> lookOf;  ///< for each triangle its number in `looks`
    std::vector<Polyline> curves;
};

/// How a Python program wants bodies: `normals` None, "flat" or "smooth", `creaseAngle` in radians.
/// Throws ValueError for other normals.
BodyOptions BodyOptionsOf(py::handle normals, double creaseAngle, bool curves, double chordError);

}  // namespace ZVSmartModel::Python
