#include "model/import/ifc/IfcValues.h"

#include <ifcpp/IFC4/include/IfcCompoundPlaneAngleMeasure.h>
#include <ifcpp/IFC4/include/IfcIdentifier.h>
#include <ifcpp/IFC4/include/IfcLabel.h>
#include <ifcpp/IFC4/include/IfcNamedUnit.h>
#include <ifcpp/IFC4/include/IfcObjectReferenceSelect.h>
#include <ifcpp/IFC4/include/IfcPhysicalSimpleQuantity.h>
#include <ifcpp/IFC4/include/IfcPropertyBoundedValue.h>
#include <ifcpp/IFC4/include/IfcPropertyEnumeratedValue.h>
#include <ifcpp/IFC4/include/IfcPropertyEnumeration.h>
#include <ifcpp/IFC4/include/IfcPropertyListValue.h>
#include <ifcpp/IFC4/include/IfcPropertyReferenceValue.h>
#include <ifcpp/IFC4/include/IfcPropertySingleValue.h>
#include <ifcpp/IFC4/include/IfcPropertyTableValue.h>
#include <ifcpp/IFC4/include/IfcText.h>
#include <ifcpp/IFC4/include/IfcUnit.h>
#include <ifcpp/IFC4/include/IfcValue.h>
#include <ifcpp/model/BuildingObject.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <iterator>
#include <string_view>
#include <typeinfo>
#include <vector>

#include "model/import/ifc/Texts.h"

namespace ZVSmartModel {

namespace {

using Unit = std::shared_ptr<IfcUnit>;
using Values = std::vector<std::shared_ptr<IfcValue>>;

/// What a type of values is called here, and the kind of unit that it is measured in.
struct ValueKind {
    std::string kind;
    std::string unitType;  ///< empty for what has no unit
};

struct NamedKind {
    const char* className;
    const char* kind;
    const char* unitType;
};

/// The types that do not follow the rule: IfcAnyThingMeasure is an "anyThing" in ANYTHINGUNIT.
constexpr NamedKind exceptions[] = {
    {"IfcLabel", "text", ""},
    {"IfcText", "text", ""},
    {"IfcIdentifier", "text", ""},
    {"IfcDescriptiveMeasure", "text", ""},
    {"IfcURIReference", "text", ""},
    {"IfcGloballyUniqueId", "text", ""},
    {"IfcInteger", "integer", ""},
    {"IfcPositiveInteger", "integer", ""},
    {"IfcDimensionCount", "integer", ""},
    {"IfcReal", "real", ""},
    {"IfcNumericMeasure", "real", ""},
    {"IfcParameterValue", "real", ""},
    {"IfcContextDependentMeasure", "real", ""},
    {"IfcBoolean", "boolean", ""},
    {"IfcLogical", "logical", ""},
    {"IfcCountMeasure", "count", ""},
    {"IfcRatioMeasure", "ratio", ""},
    {"IfcPositiveRatioMeasure", "ratio", ""},
    {"IfcNormalisedRatioMeasure", "ratio", ""},
    {"IfcPositiveLengthMeasure", "length", "LENGTHUNIT"},
    {"IfcNonNegativeLengthMeasure", "length", "LENGTHUNIT"},
    {"IfcPlaneAngleMeasure", "angle", "PLANEANGLEUNIT"},
    {"IfcPositivePlaneAngleMeasure", "angle", "PLANEANGLEUNIT"},
    {"IfcThermodynamicTemperatureMeasure", "temperature", "THERMODYNAMICTEMPERATUREUNIT"},
    {"IfcMonetaryMeasure", "money", IfcUnitSymbols::currency},
    {"IfcSectionalAreaIntegralMeasure", "sectionAreaIntegral", "SECTIONAREAINTEGRALUNIT"},
    {"IfcDate", "date", ""},
    {"IfcDateTime", "dateTime", ""},
    {"IfcTime", "timeOfDay", ""},
    {"IfcTimeStamp", "timeStamp", ""},
    {"IfcDuration", "duration", ""},
    {"IfcBinary", "binary", ""},
    {"IfcComplexNumber", "complex", ""},
    {"BoolAttribute", "boolean", ""},
    {"LogicalAttribute", "logical", ""},
    {"IntegerAttribute", "integer", ""},
    {"RealAttribute", "real", ""},
};

ValueKind KindOf(const BuildingObject& value) {
    const std::string_view name = value.className();
    const auto* known = std::find_if(std::begin(exceptions), std::end(exceptions),
                                     [&](const NamedKind& kind) { return name == kind.className; });
    if (known != std::end(exceptions)) return {known->kind, known->unitType};
    if (name.ends_with("Enum")) return {"enumeration", ""};
    constexpr std::string_view first = "Ifc";
    constexpr std::string_view last = "Measure";
    if (!name.starts_with(first) || !name.ends_with(last)) return {"text", ""};
    std::string kind(name.substr(first.size(), name.size() - first.size() - last.size()));
    std::string unitType;
    for (const char c : kind) unitType += static_cast<char>(std::toupper(c));
    if (!kind.empty()) kind[0] = static_cast<char>(std::tolower(kind[0]));
    return {kind, unitType + "UNIT"};
}

std::wstring Wide(const std::string& text) {
    return {text.begin(), text.end()};
}

std::wstring UnitOf(const ValueKind& kind, const Unit& own, const IfcUnitSymbols& units) {
    if (own) return IfcUnitSymbols::SymbolOf(own);
    return kind.unitType.empty() ? std::wstring() : units.Assigned(kind.unitType);
}

std::wstring TextOfValue(const std::shared_ptr<IfcValue>& value) {
    return value ? ValueText(*value) : std::wstring();
}

StoredProperty Empty(const std::wstring& name) {
    return {name, L"", emptyKind, L""};
}

/// What a list and the like hold, by the first of their values that there is.
struct Contents {
    std::wstring kind, unit;
};

Contents ContentsOf(const Values& values, const Unit& unit, const IfcUnitSymbols& units) {
    const auto first =
        std::find_if(values.begin(), values.end(), [](const auto& v) { return v != nullptr; });
    if (first == values.end()) return {};
    const ValueKind kind = KindOf(**first);
    return {Wide(kind.kind), UnitOf(kind, unit, units)};
}

std::wstring Joined(const Values& values) {
    std::wstring text;
    for (const auto& value : values) {
        if (!text.empty()) text += L", ";
        text += TextOfValue(value);
    }
    return text;
}

StoredProperty ListProperty(const std::wstring& name, const Values& values, const wchar_t* kind,
                            const Unit& unit, const IfcUnitSymbols& units) {
    if (values.empty()) return Empty(name);
    const Contents contents = ContentsOf(values, unit, units);
    return {name, Joined(values), kind + (L':' + contents.kind), contents.unit};
}

StoredProperty RangeProperty(const std::wstring& name, const IfcPropertyBoundedValue& range,
                             const IfcUnitSymbols& units) {
    const Values values = {range.m_LowerBoundValue, range.m_UpperBoundValue};
    const Contents contents = ContentsOf(values, range.m_Unit, units);
    if (contents.kind.empty()) return Empty(name);
    const std::wstring text =
        TextOfValue(range.m_LowerBoundValue) + L" .. " + TextOfValue(range.m_UpperBoundValue);
    return {name, text, L"range:" + contents.kind, contents.unit};
}

StoredProperty TableProperty(const std::wstring& name, const IfcPropertyTableValue& table,
                             const IfcUnitSymbols& units) {
    std::wstring text;
    const std::size_t rows = std::min(table.m_DefiningValues.size(), table.m_DefinedValues.size());
    if (rows == 0) return Empty(name);
    for (std::size_t i = 0; i < rows; ++i) {
        if (i > 0) text += L", ";
        text +=
            TextOfValue(table.m_DefiningValues[i]) + L" = " + TextOfValue(table.m_DefinedValues[i]);
    }
    const Contents from = ContentsOf(table.m_DefiningValues, table.m_DefiningUnit, units);
    const Contents to = ContentsOf(table.m_DefinedValues, table.m_DefinedUnit, units);
    const bool anyUnit = !from.unit.empty() || !to.unit.empty();
    return {name, text, L"table:" + from.kind + L'=' + to.kind,
            anyUnit ? from.unit + L" = " + to.unit : L""};
}

/// What a person would call the entity that a property refers to: the first of its texts.
std::wstring NameOfEntity(const BuildingEntity& entity) {
    std::vector<std::pair<std::string, std::shared_ptr<BuildingObject>>> attributes;
    entity.getAttributes(attributes);
    for (const auto& [name, value] : attributes) {
        const bool text = value && KindOf(*value).kind == "text" && IsPlainValue(*value);
        if (!text) continue;
        const std::wstring said = ValueText(*value);
        if (!said.empty()) return said;
    }
    return {};
}

StoredProperty ReferenceProperty(const std::wstring& name,
                                 const IfcPropertyReferenceValue& property) {
    const auto entity = std::dynamic_pointer_cast<BuildingEntity>(property.m_PropertyReference);
    if (!entity) return Empty(name);
    const std::string className = entity->className();
    return {name, NameOfEntity(*entity), L"entity:" + Wide(className), L""};
}

}  // namespace

bool IsPlainValue(const BuildingObject& value) {
    // Lists of the attributes' values are of a class that a cast does not find in every build.
    return dynamic_cast<const BuildingEntity*>(&value) == nullptr &&
           std::string_view(value.className()) != "AttributeObjectVector";
}

StoredProperty PropertyOf(const std::wstring& name, const std::shared_ptr<BuildingObject>& value,
                          const std::shared_ptr<IfcUnit>& unit, const IfcUnitSymbols& units) {
    if (!value) return Empty(name);
    const BuildingObject& given = *value;
    if (typeid(given) == typeid(IfcCompoundPlaneAngleMeasure)) {
        std::wstring text;
        for (const int part : dynamic_cast<const IfcCompoundPlaneAngleMeasure&>(given).m_vec) {
            if (!text.empty()) text += L", ";
            text += std::to_wstring(part);
        }
        return {name, text, L"angle", L"deg, min, sec, usec"};
    }
    const ValueKind kind = KindOf(given);
    std::wstring text = ValueText(given);
    if (kind.kind == "enumeration") std::erase(text, L'.');
    return {name, text, Wide(kind.kind), UnitOf(kind, unit, units)};
}

StoredProperty PropertyOf(const std::wstring& name, const IfcProperty& property,
                          const IfcUnitSymbols& units) {
    if (const auto* single = dynamic_cast<const IfcPropertySingleValue*>(&property)) {
        return PropertyOf(name, single->m_NominalValue, single->m_Unit, units);
    }
    if (const auto* list = dynamic_cast<const IfcPropertyListValue*>(&property)) {
        return ListProperty(name, list->m_ListValues, L"list", list->m_Unit, units);
    }
    if (const auto* chosen = dynamic_cast<const IfcPropertyEnumeratedValue*>(&property)) {
        const Unit unit =
            chosen->m_EnumerationReference ? chosen->m_EnumerationReference->m_Unit : nullptr;
        return ListProperty(name, chosen->m_EnumerationValues, L"enumeration", unit, units);
    }
    if (const auto* range = dynamic_cast<const IfcPropertyBoundedValue*>(&property)) {
        return RangeProperty(name, *range, units);
    }
    if (const auto* table = dynamic_cast<const IfcPropertyTableValue*>(&property)) {
        return TableProperty(name, *table, units);
    }
    if (const auto* reference = dynamic_cast<const IfcPropertyReferenceValue*>(&property)) {
        return ReferenceProperty(name, *reference);
    }
    return Empty(name);
}

/// The number stands in an attribute called LengthValue, AreaValue and so on.
StoredProperty PropertyOf(const std::wstring& name, const IfcPhysicalQuantity& quantity,
                          const IfcUnitSymbols& units) {
    const auto* simple = dynamic_cast<const IfcPhysicalSimpleQuantity*>(&quantity);
    const Unit unit = simple ? simple->m_Unit : nullptr;
    std::vector<std::pair<std::string, std::shared_ptr<BuildingObject>>> attributes;
    quantity.getAttributes(attributes);
    for (const auto& [attribute, value] : attributes) {
        if (attribute.ends_with("Value") && value) return PropertyOf(name, value, unit, units);
    }
    return Empty(name);
}

}  // namespace ZVSmartModel
