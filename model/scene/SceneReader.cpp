#include "model/scene/SceneReader.h"

#include <stdexcept>

#include "model/element/ElementRecord.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

// With what a writer or the ray tracer keeps of each.
constexpr u64 bytesOfPlacement = 1500;
constexpr u64 bytesOfName = 500;

}  // namespace

void SceneReader::Add(const SZVLGZvgComp& comp) {
    const std::size_t component = builder.AddComponent();
    const Look ownLook = OwnLook(comp);
    const auto place = [&](const std::wstring& name, StoredShape& stored,
                           const CZVIMTransf& toModel) {
        const std::optional<std::size_t> shape = ShapeOf(name, stored);
        if (!shape) return;
        block.Limits().Memory(bytesOfPlacement);
        builder.Place(component, *shape, TransformOf(toModel), ownLook);
    };
    try {
        shapes.Visit(comp, place);
    } catch (const std::length_error&) {
        throw block.ErrorAbout(Status::Damaged, SceneBuilder::TooManyPlacements());
    }
}

std::optional<std::size_t> SceneReader::ShapeOf(const std::wstring& name, StoredShape& stored) {
    const auto [known, isNewName] = byName.try_emplace(name);
    if (!isNewName) return known->second;
    block.Limits().Memory(bytesOfName + 2 * name.size() * sizeof(wchar_t));
    const auto [first, isNew] = byPlace.try_emplace(stored.place);
    if (isNew) {
        first->second = builder.AddShape(name, stored.surfaces);
        stored.surfaces = {};
        known->second = first->second;
    } else if (first->second) {
        known->second = builder.AddNamesake(name, *first->second);
    }
    return known->second;
}

}  // namespace ZVSmartModel
