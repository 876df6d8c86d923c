#pragma once

#include <memory>
#include <vector>

#include "model/import/Model.h"
#include "model/import/ifc/IfcPlanCurves.h"

class IfcObjectPlacement;
class IfcGrid;

namespace ZVSmartModel {

/// The axes of a grid in its own coordinates, metres; each is named "GridAxis" and its tag.
std::vector<ModelCurves> AxesOf(const IfcGrid& grid, const IfcUnits& units);

/// Where an object is, in metres: the chain of the placements that it is relative to.
Transform PlaceOf(const std::shared_ptr<IfcObjectPlacement>& placement, const IfcUnits& units);

}  // namespace ZVSmartModel
