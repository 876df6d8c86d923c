#include "model/element/Chosen.h"

#include <algorithm>

#include "model/element/PropertyKinds.h"
#include "model/element/RecordNames.h"
#include "model/element/Utf8.h"

namespace ZVSmartModel {

namespace {

/// `name` is that of a property in its set, or in any.
bool HasProperty(const ZVSmartZvg::SZVLGZvgComp& comp, const std::wstring& name,
                 const std::wstring& value) {
    for (std::size_t i = 0; i < comp.compProperties.size();) {
        const WideProperty property = TakeProperty(comp.compProperties, i);
        if (property.value == value && (property.fullName == name || property.name == name)) {
            return true;
        }
    }
    return false;
}

bool HasProperty(const ElementView& element, const PropertyTest& wanted) {
    const std::string_view full = wanted.name;
    return std::any_of(
        element.properties.begin(), element.properties.end(), [&](const PropertyView& property) {
            if (property.value != wanted.value) return false;
            const std::string_view set = property.set, name = property.name;
            if (name == full) return true;
            return !set.empty() && full.size() == set.size() + 1 + name.size() &&
                   full.starts_with(set) && full[set.size()] == '.' && full.ends_with(name);
        });
}

}  // namespace

Chosen::Chosen(const Selection& selection) : selection(selection), elements(selection.elements) {
    for (const std::string& name : selection.classNames) classes.push_back(FromUtf8(name));
    for (const PropertyTest& test : selection.properties) {
        properties.emplace_back(FromUtf8(test.name), FromUtf8(test.value));
    }
    std::sort(elements.begin(), elements.end());
}

bool Chosen::MayHold(unsigned int floor) const {
    if (elements.empty()) return true;
    const auto first = std::lower_bound(elements.begin(), elements.end(), ElementIndex{floor, 0});
    return first != elements.end() && first->floor == floor;
}

std::pair<unsigned int, unsigned int> Chosen::Span(unsigned int floor) const {
    constexpr unsigned int none = ElementIndex::none;
    if (elements.empty()) return {0, none};
    const auto end = std::upper_bound(elements.begin(), elements.end(), ElementIndex{floor, none});
    const auto first = std::lower_bound(elements.begin(), end, ElementIndex{floor, 0});
    if (first == end || first->floor != floor) return {0, 0};
    return {first->position, (end - 1)->position + 1};
}

bool Chosen::Holds(ElementIndex index, const ZVSmartZvg::SZVLGZvgComp& comp) const {
    const auto isOfClass = [&](std::size_t i) { return IsOfClass(comp, classes[i]); };
    return IsNamed(index, IsRoomClass(comp.classLevel2Name), isOfClass) &&
           std::all_of(properties.begin(), properties.end(), [&comp](const auto& wanted) {
               return HasProperty(comp, wanted.first, wanted.second);
           });
}

bool Chosen::Holds(const ElementView& element) const {
    const auto isOfClass = [&](std::size_t i) {
        const std::string& name = selection.classNames[i];
        return element.className == name || element.typeName == name ||
               element.materialName == name || element.predefinedType == name;
    };
    return IsNamed(element.index, IsRoomClass(element.className), isOfClass) &&
           std::all_of(
               selection.properties.begin(), selection.properties.end(),
               [&element](const PropertyTest& wanted) { return HasProperty(element, wanted); });
}

template <class OfClass>
bool Chosen::IsNamed(ElementIndex index, bool isRoom, OfClass isOfClass) const {
    if (!elements.empty()) return std::binary_search(elements.begin(), elements.end(), index);
    if (classes.empty()) return selection.rooms || !isRoom;
    for (std::size_t i = 0; i < classes.size(); ++i) {
        if (isOfClass(i)) return true;
    }
    return false;
}

}  // namespace ZVSmartModel
