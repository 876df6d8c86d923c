#pragma once

#include <vector>

#include "model/import/Model.h"

class IfcProduct;

namespace ZVSmartModel {

/// What turns the numbers of a file into metres and radians.
struct IfcUnits {
    double metres = 1;
    double radians = 1;
};

/// The curves of a product's flat representations (FootPrint, Axis, Plan, Boundary, WalkingLine,
/// Annotation), in its own coordinates and in metres; named after the representation.
///
/// Polylines, circles and arcs stay what they are; ellipses, and circles that a mapping makes
/// uneven, become short straight pieces. Each composite curve stands by itself, so that its pieces
/// can be chained. Curves of other kinds (splines, unbounded lines) and texts are left out.
std::vector<ModelCurves> PlanCurvesOf(const IfcProduct& element, const IfcUnits& units);

}  // namespace ZVSmartModel
