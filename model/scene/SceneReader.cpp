#include "model/scene/SceneReader.h"

#include <stdexcept>
#include <utility>

#include "model/element/RecordBytes.h"
#include "model/scene/RecordSurfaces.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

// With what a writer or the ray tracer keeps of each.
constexpr u64 bytesOfPlacement = 1500;
constexpr u64 bytesOfName = 500;

Transform PlacementOf(const CZVIMTransf& transf) {
    Transform placement;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 4; ++column) {
            placement[static_cast<std::size_t>(row * 4 + column)] = transf.GetAt(row, column);
        }
    }
    return placement;
}

/// The look of what a component places without a colour.
SceneLook OwnLook(const SZVLGZvgComp& comp) {
    for (const SZVLGZvgDisplayAttr* attr :
         {&comp.compAttr, &comp.classLevel4Attr, &comp.classLevel2bAttr}) {
        if (HasColour(*attr)) return LookOf(*attr, comp.classLevel4Name);
    }
    return plainLook;
}

}  // namespace

void SceneReader::Add(const SZVLGZvgComp& comp) {
    const std::size_t component = builder.AddComponent();
    const SceneLook ownLook = OwnLook(comp);
    const auto placedBy = [this](const std::wstring& name) {
        const Stored* const stored = Find(name).stored;
        return stored != nullptr ? &stored->placements : nullptr;
    };
    const auto place = [&](const std::wstring& name, const CZVIMTransf& toModel) {
        const Named& named = Find(name);
        if (!named.shape) return;
        block.Limits().Memory(bytesOfPlacement);
        builder.Place(component, *named.shape, PlacementOf(toModel), ownLook);
    };
    try {
        WalkPlacements(comp, block.Limits(), placedBy, place);
    } catch (const std::length_error&) {
        throw block.ErrorAbout(Status::Damaged, "its geometries are placed more than " +
                                                    std::to_string(SceneBuilder::mostPlacements) +
                                                    " times");
    }
}

const SceneReader::Named& SceneReader::Find(const std::wstring& name) {
    const auto [known, added] = names.try_emplace(name);
    Named& named = known->second;
    if (!added) return named;
    block.Limits().Memory(bytesOfName + 2 * name.size() * sizeof(wchar_t));
    const std::optional<u64> place = geos.Find(name);
    if (!place) {
        ++missing;
        return named;
    }
    const auto stored = storedByPlace.find(*place);
    if (stored != storedByPlace.end()) {
        named.stored = &stored->second;
        if (named.stored->shape) named.shape = builder.AddNamesake(name, *named.stored->shape);
    } else {
        named.stored = &storedByPlace.emplace(*place, Read(name, *place)).first->second;
        named.shape = named.stored->shape;
    }
    return named;
}

SceneReader::Stored SceneReader::Read(const std::wstring& name, u64 place) {
    Budget& limits = block.Limits();
    SZVLGZvgGeo geo;
    Stored stored;
    try {
        geos.Read(place, geo);
    } catch (const BudgetUsedUp&) {
        throw;
    } catch (const Error& error) {
        if (!salvage || error.GetStatus() != Status::Damaged) throw;
        return stored;
    }
    limits.Memory(BytesOf(geo));  // about what stays of it
    stored.shape = builder.AddShape(name, SurfacesOf(geo, limits));
    stored.placements = PlacementsIn(geo);
    return stored;
}

}  // namespace ZVSmartModel
