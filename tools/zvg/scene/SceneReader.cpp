#include "tools/zvg/scene/SceneReader.h"

#include <stdexcept>
#include <utility>

#include "tools/zvg/scene/RecordSurfaces.h"

using namespace ZVSmartZvg;

namespace {

Placement PlacementOf(const CZVIMTransf& transf) {
    Placement placement;
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
        const Stored& stored = Read(name);
        return stored.there ? &stored.placements : nullptr;
    };
    const auto place = [&](const std::wstring& name, const CZVIMTransf& toModel) {
        const Stored& stored = Read(name);
        if (!stored.shape) return;
        builder.Place(component, *stored.shape, PlacementOf(toModel), ownLook);
    };
    try {
        WalkPlacements(comp, placedBy, place);
    } catch (const std::length_error&) {
        throw block.Error(ExitStatus::Damaged, "its geometries are placed more than " +
                                                   std::to_string(SceneBuilder::mostPlacements) +
                                                   " times");
    }
}

const SceneReader::Stored& SceneReader::Read(const std::wstring& name) {
    const auto [place, added] = storedByName.try_emplace(name);
    Stored& stored = place->second;
    if (!added) return stored;
    SZVLGZvgGeo geo;
    try {
        stored.there = geos.Read(name, geo);
    } catch (const ToolError& error) {
        if (!salvage || error.Status() != ExitStatus::Damaged) throw;
        return stored;
    }
    if (!stored.there) {
        ++missing;
        return stored;
    }
    stored.shape = builder.AddShape(name, SurfacesOf(geo));
    stored.placements = PlacementsIn(geo);
    return stored;
}
