#include "model/import/ifc/Texts.h"

#include <ifcpp/IFC4/include/IfcIdentifier.h>
#include <ifcpp/IFC4/include/IfcLabel.h>
#include <ifcpp/IFC4/include/IfcText.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <sstream>
#include <typeinfo>
#include <utility>
#include <vector>

#include "model/element/PropertyKinds.h"

namespace ZVSmartModel {

namespace {

/// The library prints numbers with six digits only; its STEP form follows the stream's precision.
std::optional<double> NumberOf(const BuildingObject& value) {
    for (const std::type_info* text : {&typeid(IfcLabel), &typeid(IfcText), &typeid(IfcIdentifier)})
        if (typeid(value) == *text) return std::nullopt;
    std::stringstream stream;
    stream.precision(17);
    value.getStepParameter(stream);
    const std::string text = stream.str();
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = error == std::errc() &&
                       std::all_of(end, text.data() + text.size(), [](char c) { return c == '.'; });
    return whole ? std::optional(number) : std::nullopt;
}

}  // namespace

std::wstring ValueText(const BuildingObject& value) {
    if (const std::optional<double> number = NumberOf(value)) return NumberText(*number);
    return FinishStepString(value.toString());
}

std::wstring EnumeratorOf(const BuildingEntity& entity, const char* name) {
    std::vector<std::pair<std::string, std::shared_ptr<BuildingObject>>> attributes;
    entity.getAttributes(attributes);
    for (const auto& [attributeName, value] : attributes) {
        if (attributeName != name || !value) continue;
        std::wstring text = value->toString();
        std::erase(text, L'.');
        return text;
    }
    return {};
}

}  // namespace ZVSmartModel
