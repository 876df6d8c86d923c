#include "tools/zvg/scene/SceneReader.h"

#include <stdexcept>
#include <utility>

#include "tools/zvg/scene/RecordSurfaces.h"
#include "tools/zvg/text/Utf8.h"

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

}  // namespace

void SceneReader::Add(const SZVLGZvgComp& comp) {
    const std::size_t component = builder.AddComponent();
    std::optional<std::size_t> ownLook;
    const auto placedBy = [this](const std::wstring& name) {
        const Stored& stored = Read(name);
        return stored.there ? &stored.placements : nullptr;
    };
    const auto place = [&](const std::wstring& name, const CZVIMTransf& toModel) {
        const Stored& stored = Read(name);
        if (!stored.shape) return;
        if (!ownLook) ownLook = OwnLook(comp);
        builder.Place(component, *stored.shape, PlacementOf(toModel), *ownLook);
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
    stored.there = ReadGeo(name, geo);
    if (!stored.there) {
        ++missing;
        return stored;
    }
    stored.shape = builder.AddShape(name, SurfacesOf(geo, builder));
    stored.placements = PlacementsIn(geo);
    return stored;
}

bool SceneReader::ReadGeo(const std::wstring& name, SZVLGZvgGeo& geo) {
    std::string reason = "cannot be read";
    try {
        if (block.Reader().GetGeoByIdentification(name, geo)) return true;
        if (!IsIdentification(name)) return false;
    } catch (const ZVSmartFormat::CZVFTStreamException& exception) {
        reason = exception.what();
    }
    throw block.Error(ExitStatus::Damaged, "geometry '" + ToUtf8(name) + "': " + reason);
}

/// The reader's answer is the same for a geometry that is not there and for one whose block does
/// not decode.
bool SceneReader::IsIdentification(const std::wstring& name) {
    if (!identifications) {
        identifications.emplace();
        std::wstring identification;
        SZVLGZvgGeoIndex index;
        const unsigned int count = block.Reader().GetGeoIdentificationNum();
        for (unsigned int i = 0; i < count; ++i) {
            if (!block.Reader().GetGeoIdentificationByIndex(i, identification, index)) break;
            identifications->insert(identification);
        }
    }
    return identifications->contains(name);
}

std::size_t SceneReader::OwnLook(const SZVLGZvgComp& comp) {
    for (const SZVLGZvgDisplayAttr* attr :
         {&comp.compAttr, &comp.classLevel4Attr, &comp.classLevel2bAttr}) {
        if (HasColour(*attr)) return builder.AddLook(LookOf(*attr, comp.classLevel4Name));
    }
    return builder.AddLook(plainLook);
}
