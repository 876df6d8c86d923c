#include "model/import/ifc/Texts.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <sstream>
#include <utility>
#include <vector>

namespace ZVSmartModel {

namespace {

/// The library prints numbers with six digits only; its STEP form follows the stream's precision.
std::optional<double> NumberOf(const BuildingObject& value) {
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

std::wstring NumberText(double number) {
    char digits[64];
    const double size = std::fabs(number);
    const bool plain = size == 0 || (size >= 1e-6 && size < 1e15);
    const char* end =
        plain ? std::to_chars(digits, digits + sizeof digits, number, std::chars_format::fixed).ptr
              : std::to_chars(digits, digits + sizeof digits, number).ptr;
    return {static_cast<const char*>(digits), end};
}

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
