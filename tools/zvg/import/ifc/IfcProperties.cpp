#include "tools/zvg/import/ifc/IfcProperties.h"

#include <ifcpp/IFC4/include/IfcComplexProperty.h>
#include <ifcpp/IFC4/include/IfcElement.h>
#include <ifcpp/IFC4/include/IfcElementQuantity.h>
#include <ifcpp/IFC4/include/IfcIdentifier.h>
#include <ifcpp/IFC4/include/IfcLabel.h>
#include <ifcpp/IFC4/include/IfcPhysicalComplexQuantity.h>
#include <ifcpp/IFC4/include/IfcPropertyBoundedValue.h>
#include <ifcpp/IFC4/include/IfcPropertyEnumeratedValue.h>
#include <ifcpp/IFC4/include/IfcPropertyListValue.h>
#include <ifcpp/IFC4/include/IfcPropertySet.h>
#include <ifcpp/IFC4/include/IfcPropertySetDefinitionSet.h>
#include <ifcpp/IFC4/include/IfcPropertySingleValue.h>
#include <ifcpp/IFC4/include/IfcPropertyTableValue.h>
#include <ifcpp/IFC4/include/IfcRelDefinesByProperties.h>
#include <ifcpp/IFC4/include/IfcRelDefinesByType.h>
#include <ifcpp/IFC4/include/IfcText.h>
#include <ifcpp/IFC4/include/IfcTypeObject.h>
#include <ifcpp/IFC4/include/IfcValue.h>

#include <set>

#include "tools/zvg/import/ifc/Texts.h"

namespace {

using Values = std::vector<std::shared_ptr<IfcValue>>;

std::wstring TextOfValue(const std::shared_ptr<IfcValue>& value) {
    return value ? ValueText(*value) : std::wstring();
}

std::wstring Joined(const Values& values) {
    std::wstring text;
    for (const auto& value : values) {
        if (!text.empty()) text += L", ";
        text += TextOfValue(value);
    }
    return text;
}

std::wstring TableText(const IfcPropertyTableValue& table) {
    std::wstring text;
    const std::size_t rows = std::min(table.m_DefiningValues.size(), table.m_DefinedValues.size());
    for (std::size_t i = 0; i < rows; ++i) {
        if (i > 0) text += L", ";
        text +=
            TextOfValue(table.m_DefiningValues[i]) + L" = " + TextOfValue(table.m_DefinedValues[i]);
    }
    return text;
}

/// A property's value; empty for kinds that hold none, such as references.
std::wstring PropertyText(const IfcProperty& property) {
    if (const auto* single = dynamic_cast<const IfcPropertySingleValue*>(&property)) {
        return TextOfValue(single->m_NominalValue);
    }
    if (const auto* list = dynamic_cast<const IfcPropertyListValue*>(&property)) {
        return Joined(list->m_ListValues);
    }
    if (const auto* chosen = dynamic_cast<const IfcPropertyEnumeratedValue*>(&property)) {
        return Joined(chosen->m_EnumerationValues);
    }
    if (const auto* bounded = dynamic_cast<const IfcPropertyBoundedValue*>(&property)) {
        return TextOfValue(bounded->m_LowerBoundValue) + L" .. " +
               TextOfValue(bounded->m_UpperBoundValue);
    }
    if (const auto* table = dynamic_cast<const IfcPropertyTableValue*>(&property)) {
        return TableText(*table);
    }
    return {};
}

/// The number of a simple quantity, whose attribute is called LengthValue, AreaValue and so on.
std::wstring QuantityText(const IfcPhysicalQuantity& quantity) {
    std::vector<std::pair<std::string, std::shared_ptr<BuildingObject>>> attributes;
    quantity.getAttributes(attributes);
    for (const auto& [name, value] : attributes) {
        if (name.ends_with("Value") && value) return ValueText(*value);
    }
    return {};
}

/// Gathers (name, value) pairs; the first of equal names stays.
class Gatherer {
  public:
    void Add(const std::wstring& name, const std::wstring& value) {
        if (value.empty() || !names.insert(name).second) return;
        properties.emplace_back(name, value);
    }

    void AddSet(const std::shared_ptr<IfcPropertySetDefinition>& definition) {
        if (const auto set = std::dynamic_pointer_cast<IfcPropertySet>(definition)) {
            AddProperties(TextOf(set->m_Name), set->m_HasProperties, 0);
        } else if (const auto q = std::dynamic_pointer_cast<IfcElementQuantity>(definition)) {
            AddQuantities(TextOf(q->m_Name), q->m_Quantities, 0);
        }
    }

    void AddDefinition(const std::shared_ptr<IfcPropertySetDefinitionSelect>& select) {
        AddSet(std::dynamic_pointer_cast<IfcPropertySetDefinition>(select));
        const auto sets = std::dynamic_pointer_cast<IfcPropertySetDefinitionSet>(select);
        if (!sets) return;
        for (const auto& set : sets->m_vec) AddSet(set);
    }

    ModelProperties Take() { return std::move(properties); }

  private:
    /// Files may nest properties in a circle.
    static constexpr int deepestNesting = 16;

    void AddProperties(const std::wstring& prefix,
                       const std::vector<std::shared_ptr<IfcProperty>>& list, int depth) {
        for (const auto& property : list) {
            if (!property) continue;
            const std::wstring name = prefix + L'.' + TextOf(property->m_Name);
            const auto complex = std::dynamic_pointer_cast<IfcComplexProperty>(property);
            if (!complex) {
                Add(name, PropertyText(*property));
            } else if (depth < deepestNesting) {
                AddProperties(name, complex->m_HasProperties, depth + 1);
            }
        }
    }

    void AddQuantities(const std::wstring& prefix,
                       const std::vector<std::shared_ptr<IfcPhysicalQuantity>>& list, int depth) {
        for (const auto& quantity : list) {
            if (!quantity) continue;
            const std::wstring name = prefix + L'.' + TextOf(quantity->m_Name);
            const auto complex = std::dynamic_pointer_cast<IfcPhysicalComplexQuantity>(quantity);
            if (!complex) {
                Add(name, QuantityText(*quantity));
            } else if (depth < deepestNesting) {
                AddQuantities(name, complex->m_HasQuantities, depth + 1);
            }
        }
    }

    std::set<std::wstring> names;
    ModelProperties properties;
};

}  // namespace

ModelProperties PropertiesOf(const IfcElement& element) {
    Gatherer gatherer;
    gatherer.Add(L"Element.Name", TextOf(element.m_Name));
    gatherer.Add(L"Element.Description", TextOf(element.m_Description));
    gatherer.Add(L"Element.ObjectType", TextOf(element.m_ObjectType));
    gatherer.Add(L"Element.Tag", TextOf(element.m_Tag));
    for (const auto& weakRelation : element.m_IsDefinedBy_inverse) {
        if (const auto relation = weakRelation.lock()) {
            gatherer.AddDefinition(relation->m_RelatingPropertyDefinition);
        }
    }
    for (const auto& weakRelation : element.m_IsTypedBy_inverse) {
        const auto relation = weakRelation.lock();
        if (!relation || !relation->m_RelatingType) continue;
        for (const auto& set : relation->m_RelatingType->m_HasPropertySets) gatherer.AddSet(set);
    }
    return gatherer.Take();
}
