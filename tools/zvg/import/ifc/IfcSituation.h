#pragma once

#include "tools/zvg/import/ifc/IfcUnitSymbols.h"
#include "tools/zvg/import/ifc/PropertyGatherer.h"

class IfcObjectDefinition;

/// Where a model stands in the world: the address of a site or a building, a site's latitude and
/// longitude in degrees as well, a project's map coordinates, true north and units. Nothing for
/// other objects.
void AddSituation(const IfcObjectDefinition& object, const IfcUnitSymbols& units,
                  PropertyGatherer& gatherer);
