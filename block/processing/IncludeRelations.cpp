#include "processing/IncludeRelations.h"

#include <optional>
#include <utility>

namespace ZVSmartZvg {

IncludeRelations::IncludeRelations(StoreGeo store) : store(std::move(store)) {}

std::wstring IncludeRelations::CreateIncludeBlockGeo(const SZVLGZvgGeo& geo) {
    std::wstring key = keys.Next();
    store(key, geo);
    return key;
}

template <class Key>
void IncludeRelations::Relate(Table<Key>& table, DerivedFace<Key> derived,
                              SZVLGZvgGeoRelInclude& rel) {
    // One step that looks up and inserts: with an order that is not transitive a lookup may miss
    // an entry that then stands in the way of the new one.
    const auto [entry, isNew] = table.try_emplace(std::move(derived.key));
    if (isNew) {
        try {
            SZVLGZvgGeo geo;
            geo.shells.push_back(std::move(derived.localShell));
            entry->second = CreateIncludeBlockGeo(geo);
        } catch (...) {
            table.erase(entry);
            throw;
        }
    }
    rel.key = entry->second;
    rel.transform = derived.transform;
}

bool IncludeRelations::RelateCylinderFace(const SZVLGParamCylinderFace& face,
                                          SZVLGZvgGeoRelInclude& rel) {
    std::optional<DerivedFace<CylinderKey>> derived = DeriveCylinderFace(face);
    if (!derived) return false;
    Relate(cylinders, std::move(*derived), rel);
    return true;
}

bool IncludeRelations::RelateRevolvedFace(const SZVLGParamRevolvedFace& face,
                                          SZVLGZvgGeoRelInclude& rel) {
    CZVIMTransf transform = rel.transform;
    std::optional<DerivedFace<RevolvedKey>> derived = DeriveRevolvedFace(face, transform);
    if (!derived) {
        rel.transform = transform;
        return false;
    }
    Relate(revolved, std::move(*derived), rel);
    return true;
}

bool IncludeRelations::RelateRuledFace(const SZVLGParamRuledFace& face,
                                       SZVLGZvgGeoRelInclude& rel) {
    std::optional<DerivedFace<RuledKey>> derived = DeriveRuledFace(face);
    if (!derived) return false;
    Relate(ruled, std::move(*derived), rel);
    return true;
}

}  // namespace ZVSmartZvg
