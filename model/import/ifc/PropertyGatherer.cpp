#include "model/import/ifc/PropertyGatherer.h"

namespace ZVSmartModel {

void PropertyGatherer::Add(StoredProperty property) {
    const auto [place, added] = placeByName.emplace(property.name, properties.size());
    if (added) {
        properties.push_back(std::move(property));
        return;
    }
    StoredProperty& first = properties[place->second];
    if (first.value.empty()) {
        first = std::move(property);
    } else if (!defaults && !property.value.empty() && property != first) {
        ++dropped;
    }
}

void PropertyGatherer::AddText(const std::wstring& name, const std::wstring& value) {
    if (!value.empty()) Add({name, value, textKind, L""});
}

std::wstring PropertyGatherer::FreeSet(const std::wstring& name) {
    const int times = ++timesAsked[name];
    return times == 1 ? name : name + L" (" + std::to_wstring(times) + L')';
}

}  // namespace ZVSmartModel
