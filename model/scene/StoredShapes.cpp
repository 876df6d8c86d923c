#include "model/scene/StoredShapes.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "model/element/Utf8.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

void StoredShapes::Visit(const std::vector<std::wstring>& names, const Use& use) {
    StoredShape* shape = nullptr;  // the last that was asked for
    const auto placedBy = [&](const std::wstring& name) {
        shape = Find(name);
        return shape != nullptr ? &shape->placements : nullptr;
    };
    const auto place = [&](const std::wstring& name, const CZVIMTransf& toModel) {
        use(name, *shape, toModel);
    };
    WalkPlacements(names, block.Limits(), placedBy, place);
}

StoredShape* StoredShapes::Find(const std::wstring& name) {
    const std::optional<u64> place = geos.Find(name);
    if (!place) {
        if (missing.insert(name).second) block.Limits().Memory(100 + name.size() * sizeof(wchar_t));
        return nullptr;
    }
    auto known = byPlace.find(*place);
    if (known == byPlace.end()) {
        known = byPlace.emplace(*place, Kept{Read(*place, name)}).first;
        keptBytes += known->second.shape.bytes;
    }
    known->second.lastUse = ++uses;
    return &known->second.shape;
}

/// Reads what is known nowhere. What places others is read for their sake.
StoredShape StoredShapes::Read(u64 place, const std::wstring& name) {
    if (wants.known == nullptr) return ReadRecord(place);
    StoredShape shape;
    shape.isKnown = geos.IsPlain(place) && (*wants.known)(ToUtf8(name));
    if (!shape.isKnown) return ReadRecord(place);
    shape.place = place;
    shape.bytes = sizeof shape;
    block.Limits().Memory(shape.bytes);
    return shape;
}

StoredShape StoredShapes::ReadRecord(u64 place) {
    if (std::optional<StoredShape> made = ahead.Take(place)) return std::move(*made);
    SZVLGZvgGeo geo;
    try {
        geos.Read(place, geo);
    } catch (const BudgetUsedUp&) {
        throw;
    } catch (const Error& error) {
        if (!wants.salvage || error.GetStatus() != Status::Damaged) throw;
        StoredShape nothing;
        nothing.place = place;
        return nothing;
    }
    StoredShape shape = ShapeOf(place, geo, wants, block.Limits());
    if (wants.known != nullptr && shape.placements.empty()) geos.NotePlain(place);
    return shape;
}

void StoredShapes::Trim(u64 mostBytes) {
    missing.clear();
    if (keptBytes <= mostBytes) return;
    std::vector<std::pair<u64, u64>> byUse;  // and place
    byUse.reserve(byPlace.size());
    for (const auto& [place, kept] : byPlace) byUse.emplace_back(kept.lastUse, place);
    std::sort(byUse.begin(), byUse.end());
    for (const auto& [lastUse, place] : byUse) {
        if (keptBytes <= mostBytes / 2) return;
        const auto oldest = byPlace.find(place);
        keptBytes -= oldest->second.shape.bytes;
        byPlace.erase(oldest);
    }
}

}  // namespace ZVSmartModel
