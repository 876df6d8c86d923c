#pragma once

#include <memory>
#include <string>

#include "model/element/PropertyKinds.h"
#include "model/import/ifc/IfcUnitSymbols.h"

class BuildingEntity;
class BuildingObject;
class IfcProperty;
class IfcPhysicalQuantity;

namespace ZVSmartModel {

// Values of a file as properties: their text as the file has it, what kind of value they are, and
// its unit: the value's own, or else the one that the project assigns to its kind.

/// The kind of values that are GlobalIds of components, ", " between them.
inline const std::wstring referenceKind = L"reference";

/// One value; `unit` may be null.
StoredProperty PropertyOf(const std::wstring& name, const std::shared_ptr<BuildingObject>& value,
                          const std::shared_ptr<IfcUnit>& unit, const IfcUnitSymbols& units);

/// A property of any kind but a complex one: lists and enumerations as "a, b", bounds as "a .. b",
/// tables as "a = b, c = d", what refers to an entity as that entity's name.
StoredProperty PropertyOf(const std::wstring& name, const IfcProperty& property,
                          const IfcUnitSymbols& units);

/// A simple quantity.
StoredProperty PropertyOf(const std::wstring& name, const IfcPhysicalQuantity& quantity,
                          const IfcUnitSymbols& units);

/// Whether a value is a text, a number, an enumerator or the like, and not an entity.
bool IsPlainValue(const BuildingObject& value);

}  // namespace ZVSmartModel
