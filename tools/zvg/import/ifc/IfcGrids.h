#pragma once

#include <memory>
#include <vector>

#include "tools/zvg/import/Model.h"
#include "tools/zvg/import/ifc/IfcPlanCurves.h"

class IfcObjectPlacement;
class IfcGrid;

/// The axes of a grid in its own coordinates, metres; each is named "GridAxis" and its tag.
std::vector<ModelCurves> AxesOf(const IfcGrid& grid, const IfcUnits& units);

/// Where an object is, in metres: the chain of the placements that it is relative to.
Placement PlaceOf(const std::shared_ptr<IfcObjectPlacement>& placement, const IfcUnits& units);
