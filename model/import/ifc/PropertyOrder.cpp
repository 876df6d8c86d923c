#include "model/import/ifc/PropertyOrder.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace ZVSmartModel {

void PropertyOrder::Apply(std::vector<StoredProperty>& properties) {
    const auto rank = [](Ranks& ranks, const std::wstring& name) {
        return ranks.try_emplace(name, ranks.size()).first->second;
    };
    struct Ranked {
        std::size_t set, name;
        StoredProperty* property;
    };
    std::vector<Ranked> ranked;
    ranked.reserve(properties.size());
    for (StoredProperty& property : properties) {
        const std::wstring set = property.name.substr(0, property.name.find(L'.'));
        ranked.push_back({rank(sets, set), rank(names, property.name), &property});
    }
    std::sort(ranked.begin(), ranked.end(), [](const Ranked& a, const Ranked& b) {
        return std::tie(a.set, a.name) < std::tie(b.set, b.name);
    });
    std::vector<StoredProperty> ordered;
    ordered.reserve(properties.size());
    for (const Ranked& one : ranked) ordered.push_back(std::move(*one.property));
    properties = std::move(ordered);
}

}  // namespace ZVSmartModel
