#pragma once

#include <memory>
#include <string>

#include "model/import/ifc/IfcUnitSymbols.h"
#include "model/import/ifc/PropertyGatherer.h"

class IfcObjectDefinition;
class IfcTypeObject;

namespace ZVSmartModel {

/// The type of an object; null where it has none.
std::shared_ptr<IfcTypeObject> TypeOf(const IfcObjectDefinition& object);

/// What relates an object to others and to the world beyond the model, as properties: its type,
/// classifications, groups, zones and systems, space boundaries, connections, ports, layers, and
/// the addresses and map coordinates of site, building and project. docs/GUIDE.md lists the names.
void AddRelations(const IfcObjectDefinition& object, const IfcUnitSymbols& units,
                  PropertyGatherer& gatherer);

/// The GlobalId of the first group that the object is in; empty where it is in none.
std::wstring GroupOf(const IfcObjectDefinition& object);

}  // namespace ZVSmartModel
