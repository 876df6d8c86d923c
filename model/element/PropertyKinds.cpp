#include "model/element/PropertyKinds.h"

#include <charconv>
#include <cmath>

namespace ZVSmartModel {

namespace {

constexpr wchar_t companionMark = L'@';

bool IsCompanionName(const std::wstring& name, const std::wstring& ofProperty) {
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

std::vector<StoredProperty> PropertiesOfPairs(const PropertyPairs& pairs) {
    std::vector<StoredProperty> properties;
    properties.reserve(pairs.size());
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        StoredProperty& property = properties.emplace_back();
        property.name = pairs[i].first;
        property.value = pairs[i].second;
        if (i + 1 == pairs.size() || !IsCompanionName(pairs[i + 1].first, property.name)) continue;
        const std::wstring& said = pairs[++i].second;
        const std::size_t blank = said.find(L' ');
        property.kind = said.substr(0, blank);
        if (blank != std::wstring::npos) property.unit = said.substr(blank + 1);
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
