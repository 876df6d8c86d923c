#pragma once

#include <cstddef>

#include "ZVSmartModel/Builder.h"
#include "model/import/Model.h"

namespace ZVSmartModel {

// What a host makes, as the parts of a model that importers hand on. Every mistake in it throws
// Error Usage.

ModelStorey StoreyOf(const NewFloor& floor);
ModelBuilding BuildingOf(const NewBuilding& building);
/// Not yet in the canonical form, and without a key.
ModelShape ShapeOf(const NewShape& shape);
/// `floors` and `shapes` are how many there are. The element belongs to no building.
ModelElement ElementOf(const NewElement& element, std::size_t floors, std::size_t shapes);

}  // namespace ZVSmartModel
