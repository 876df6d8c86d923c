#pragma once

#include "model/import/ifc/IfcUnitSymbols.h"
#include "model/import/ifc/PropertyGatherer.h"

class IfcObjectDefinition;

namespace ZVSmartModel {

/// Where a model stands in the world: the address of a site or a building, a site's latitude and
/// longitude in degrees as well, a project's map coordinates, true north and units. Nothing for
/// other objects.
void AddSituation(const IfcObjectDefinition& object, const IfcUnitSymbols& units,
                  PropertyGatherer& gatherer);

}  // namespace ZVSmartModel
