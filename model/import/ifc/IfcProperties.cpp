#include "model/import/ifc/IfcProperties.h"

#include <ifcpp/IFC4/include/IfcComplexProperty.h>
#include <ifcpp/IFC4/include/IfcContext.h>
#include <ifcpp/IFC4/include/IfcElementQuantity.h>
#include <ifcpp/IFC4/include/IfcIdentifier.h>
#include <ifcpp/IFC4/include/IfcLabel.h>
#include <ifcpp/IFC4/include/IfcObject.h>
#include <ifcpp/IFC4/include/IfcPhysicalComplexQuantity.h>
#include <ifcpp/IFC4/include/IfcPreDefinedPropertySet.h>
#include <ifcpp/IFC4/include/IfcPropertyBoundedValue.h>
#include <ifcpp/IFC4/include/IfcPropertySet.h>
#include <ifcpp/IFC4/include/IfcPropertySetDefinitionSet.h>
#include <ifcpp/IFC4/include/IfcRelDefinesByProperties.h>
#include <ifcpp/IFC4/include/IfcRelDefinesByType.h>
#include <ifcpp/IFC4/include/IfcTypeObject.h>
#include <ifcpp/IFC4/include/IfcUnit.h>
#include <ifcpp/IFC4/include/IfcValue.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include "model/import/ifc/IfcValues.h"
#include "model/import/ifc/PerClass.h"
#include "model/import/ifc/Texts.h"

namespace ZVSmartModel {

namespace {

/// Files may nest properties in a circle.
constexpr int deepestNesting = 16;

/// One set after another; they nest in complex properties and quantities.
class SetWalk {
  public:
    SetWalk(const IfcUnitSymbols& units, PropertyGatherer& gatherer)
        : units(units), gatherer(gatherer) {}

    void AddSet(const std::shared_ptr<IfcPropertySetDefinition>& definition) {
        if (const auto set = std::dynamic_pointer_cast<IfcPropertySet>(definition)) {
            Add(TextOf(set->m_Name), set->m_HasProperties, 0);
        } else if (const auto q = std::dynamic_pointer_cast<IfcElementQuantity>(definition)) {
            Add(TextOf(q->m_Name), q->m_Quantities, 0);
        } else if (std::dynamic_pointer_cast<IfcPreDefinedPropertySet>(definition)) {
            const std::string className = definition->className();
            const std::wstring name(className.begin(), className.end());
            AddAttributes(gatherer.FreeSet(name), *definition, units, gatherer);
        }
    }

    void Add(const std::wstring& prefix, const std::vector<std::shared_ptr<IfcProperty>>& list,
             int depth) {
        for (const auto& property : list) {
            if (!property) continue;
            const std::wstring name = prefix + L'.' + TextOf(property->m_Name);
            if (!isComplexProperty(*property)) {
                gatherer.Add(PropertyOf(name, *property, units));
                if (isRange(*property)) AddSetPoint(name, *property);
            } else if (depth < deepestNesting) {
                const auto& complex = dynamic_cast<const IfcComplexProperty&>(*property);
                Add(name, complex.m_HasProperties, depth + 1);
            }
        }
    }

  private:
    void AddSetPoint(const std::wstring& name, const IfcProperty& property) {
        const auto& range = dynamic_cast<const IfcPropertyBoundedValue&>(property);
        if (!range.m_SetPointValue) return;
        gatherer.Add(PropertyOf(name + L".SetPoint", range.m_SetPointValue, range.m_Unit, units));
    }

    void Add(const std::wstring& prefix,
             const std::vector<std::shared_ptr<IfcPhysicalQuantity>>& list, int depth) {
        for (const auto& quantity : list) {
            if (!quantity) continue;
            const std::wstring name = prefix + L'.' + TextOf(quantity->m_Name);
            if (!isComplexQuantity(*quantity)) {
                gatherer.Add(PropertyOf(name, *quantity, units));
            } else if (depth < deepestNesting) {
                const auto& complex = dynamic_cast<const IfcPhysicalComplexQuantity&>(*quantity);
                Add(name, complex.m_HasQuantities, depth + 1);
            }
        }
    }

    const IfcUnitSymbols& units;
    PropertyGatherer& gatherer;
    IsOf<IfcComplexProperty> isComplexProperty;
    IsOf<IfcPropertyBoundedValue> isRange;
    IsOf<IfcPhysicalComplexQuantity> isComplexQuantity;
};

using Definitions = std::vector<std::weak_ptr<IfcRelDefinesByProperties>>;

const Definitions* DefinitionsOf(const IfcObjectDefinition& object) {
    if (const auto* thing = dynamic_cast<const IfcObject*>(&object)) {
        return &thing->m_IsDefinedBy_inverse;
    }
    const auto* context = dynamic_cast<const IfcContext*>(&object);
    return context ? &context->m_IsDefinedBy_inverse : nullptr;
}

}  // namespace

void AddAttributes(const std::wstring& set, const BuildingEntity& entity,
                   const IfcUnitSymbols& units, PropertyGatherer& gatherer) {
    constexpr const char* placed[] = {"GlobalId", "OwnerHistory", "PredefinedType"};
    std::vector<std::pair<std::string, std::shared_ptr<BuildingObject>>> attributes;
    entity.getAttributes(attributes);
    for (const auto& [name, value] : attributes) {
        const bool elsewhere =
            std::any_of(std::begin(placed), std::end(placed),
                        [&name = name](const char* other) { return name == other; });
        if (elsewhere || !value || !IsPlainValue(*value)) continue;
        gatherer.Add(
            PropertyOf(set + L'.' + std::wstring(name.begin(), name.end()), value, nullptr, units));
    }
}

void AddProperties(const std::wstring& prefix,
                   const std::vector<std::shared_ptr<IfcProperty>>& properties,
                   const IfcUnitSymbols& units, PropertyGatherer& gatherer) {
    SetWalk(units, gatherer).Add(prefix, properties, 0);
}

void AddOwnProperties(const IfcObjectDefinition& object, const IfcUnitSymbols& units,
                      PropertyGatherer& gatherer) {
    AddAttributes(L"Element", object, units, gatherer);
    const Definitions* definitions = DefinitionsOf(object);
    if (!definitions) return;
    SetWalk walk(units, gatherer);
    for (const auto& weakRelation : *definitions) {
        const auto relation = weakRelation.lock();
        if (!relation) continue;
        const auto& select = relation->m_RelatingPropertyDefinition;
        walk.AddSet(std::dynamic_pointer_cast<IfcPropertySetDefinition>(select));
        const auto sets = std::dynamic_pointer_cast<IfcPropertySetDefinitionSet>(select);
        if (!sets) continue;
        for (const auto& set : sets->m_vec) walk.AddSet(set);
    }
}

void AddTypeProperties(const IfcObjectDefinition& object, const IfcUnitSymbols& units,
                       PropertyGatherer& gatherer) {
    const auto* thing = dynamic_cast<const IfcObject*>(&object);
    if (!thing) return;
    gatherer.BeginDefaults();
    SetWalk walk(units, gatherer);
    for (const auto& weakRelation : thing->m_IsTypedBy_inverse) {
        const auto relation = weakRelation.lock();
        if (!relation || !relation->m_RelatingType) continue;
        for (const auto& set : relation->m_RelatingType->m_HasPropertySets) walk.AddSet(set);
    }
}

}  // namespace ZVSmartModel
