#pragma once

#include "model/import/ifc/IfcUnitSymbols.h"
#include "model/import/ifc/PropertyGatherer.h"

class BuildingEntity;
class IfcObjectDefinition;
class IfcProperty;

namespace ZVSmartModel {

/// The plain values among an entity's attributes, as "SET.attribute"; none for those that say who
/// the entity is, or what has a field of its own.
void AddAttributes(const std::wstring& set, const BuildingEntity& entity,
                   const IfcUnitSymbols& units, PropertyGatherer& gatherer);

/// Properties as "PREFIX.name", those of complex ones as "PREFIX.name.name".
void AddProperties(const std::wstring& prefix,
                   const std::vector<std::shared_ptr<IfcProperty>>& properties,
                   const IfcUnitSymbols& units, PropertyGatherer& gatherer);

/// What a file says about an object: its own attributes as "Element.Name" and so on, then the
/// properties and quantities of its sets as "set.property".
void AddOwnProperties(const IfcObjectDefinition& object, const IfcUnitSymbols& units,
                      PropertyGatherer& gatherer);
/// Those of its type.
void AddTypeProperties(const IfcObjectDefinition& object, const IfcUnitSymbols& units,
                       PropertyGatherer& gatherer);

}  // namespace ZVSmartModel
