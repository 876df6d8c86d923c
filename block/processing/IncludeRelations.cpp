#include "processing/IncludeRelations.h"

#include <optional>
#include <utility>

namespace ZVSmartZvg {

IncludeRelations::IncludeRelations(StoreGeo store) : store(std::move(store)) {}

std::wstring IncludeRelations::CreateIncludeBlockGeo(const SZVLGZvgGeo& geo) {
    std::wstring key =
        L"mater_include_key_" + std::to_wstring(static_cast<std::int32_t>(nextNumber));
    ++nextNumber;
    store(key, geo);
    return key;
}

template <class Key>
void IncludeRelations::Relate(IncludeTable<Key>& table, DerivedFace<Key> derived,
                              SZVLGZvgGeoRelInclude& rel) {
    const auto match = table.FindOrAdd(std::move(derived.key), [this](Key& key) {
        SZVLGZvgGeo geo;
        geo.shells.push_back(std::move(key.localShell));
        std::wstring includeKey = CreateIncludeBlockGeo(geo);
        key.localShell = std::move(geo.shells.back());
        return includeKey;
    });
    rel.key = match.includeKey;
    rel.transform = derived.transform * match.turn;
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
