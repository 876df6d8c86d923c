#pragma once

#include <memory>
#include <vector>

#include "model/import/Model.h"
#include "model/import/ifc/IfcLosses.h"
#include "model/import/ifc/IfcUnitSymbols.h"
#include "model/import/ifc/PropertyOrder.h"
#include "model/import/ifc/StepText.h"

class BuildingModel;
class IfcObjectDefinition;

namespace ZVSmartModel {

using IfcObjects = std::vector<std::shared_ptr<IfcObjectDefinition>>;

/// What becomes a component, in the file's order: elements, rooms, grids, ports, annotations and
/// whatever else has a place in space, the project, site, buildings and storeys, and the groups
/// that these are in. Openings do not: they are cut.
IfcObjects ObjectsOf(const BuildingModel& model);

/// Whether anything is among them besides the structure that holds it.
bool AnyContent(const IfcObjects& objects);

/// What the file says of an object, its properties in `order`; its place, its materials and its
/// shapes are not in it.
ModelElement Described(const IfcObjectDefinition& object, const StepText& step,
                       const IfcUnitSymbols& units, PropertyOrder& order, IfcLosses& losses);

}  // namespace ZVSmartModel
