#include "model/element/PropertyKinds.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace ZVSmartModel {

namespace {

constexpr wchar_t companionMark = L'@';

bool IsCompanionName(std::wstring_view name, std::wstring_view ofProperty) {
    return name.size() == ofProperty.size() + 1 && name.back() == companionMark &&
           name.starts_with(ofProperty);
}

}  // namespace

PropertyPairs PairsOf(const std::vector<StoredProperty>& properties) {
    PropertyPairs pairs;
    pairs.reserve(properties.size() * 2);
    for (std::size_t i = 0; i < properties.size(); ++i) {
        const auto& [name, value, kind, unit] = properties[i];
        pairs.emplace_back(name, value);
        const bool mistakable =
            i + 1 < properties.size() && IsCompanionName(properties[i + 1].name, name);
        if (kind == textKind && unit.empty() && !mistakable) continue;
        pairs.emplace_back(name + companionMark, unit.empty() ? kind : kind + L' ' + unit);
    }
    return pairs;
}

WideProperty TakeProperty(const PropertyPairs& pairs, std::size_t& i) {
    const auto& [fullName, value] = pairs[i++];
    WideProperty property{{}, fullName, fullName, value, textKind, {}};
    const std::size_t dot = fullName.find(L'.');
    if (dot != std::wstring::npos) {
        property.set = property.fullName.substr(0, dot);
        property.name = property.fullName.substr(dot + 1);
    }
    if (i == pairs.size() || !IsCompanionName(pairs[i].first, fullName)) return property;
    const std::wstring_view said = pairs[i++].second;
    const std::size_t blank = said.find(L' ');
    property.kind = said.substr(0, blank);
    if (blank != std::wstring_view::npos) property.unit = said.substr(blank + 1);
    return property;
}

std::optional<double> NumberOf(std::string_view value, std::string_view kind) {
    constexpr std::array<std::string_view, 9> texts = {"text",      "empty",    "boolean",
                                                       "logical",   "date",     "dateTime",
                                                       "timeOfDay", "duration", "reference"};
    if (std::find(texts.begin(), texts.end(), kind) != texts.end()) return std::nullopt;
    double number = 0;
    const char* const end = value.data() + value.size();
    const auto [stop, error] = std::from_chars(value.data(), end, number);
    if (error != std::errc() || stop != end) return std::nullopt;
    return number;
}

std::vector<StoredProperty> PropertiesOfPairs(const PropertyPairs& pairs) {
    std::vector<StoredProperty> properties;
    properties.reserve(pairs.size());
    for (std::size_t i = 0; i < pairs.size();) {
        const WideProperty view = TakeProperty(pairs, i);
        properties.push_back({std::wstring(view.fullName), std::wstring(view.value),
                              std::wstring(view.kind), std::wstring(view.unit)});
    }
    return properties;
}

std::wstring NumberText(double number) {
    char digits[64];
    const double size = std::fabs(number);
    const bool plain = size == 0 || (size >= 1e-6 && size < 1e15);
    const char* end =
        plain ? std::to_chars(digits, digits + sizeof digits, number, std::chars_format::fixed).ptr
              : std::to_chars(digits, digits + sizeof digits, number).ptr;
    return {static_cast<const char*>(digits), end};
}

std::wstring ValueWithUnit(const StoredProperty& property) {
    return property.unit.empty() ? property.value : property.value + L' ' + property.unit;
}

}  // namespace ZVSmartModel
