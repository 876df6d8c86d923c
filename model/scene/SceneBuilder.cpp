#include "model/scene/SceneBuilder.h"

#include <algorithm>
#include <stdexcept>

namespace ZVSmartModel {

namespace {

constexpr std::size_t noLook = static_cast<std::size_t>(-1);

/// The middle of the points; the origin where there are none.
Point MiddleOf(const std::vector<Triangles>& surfaces) {
    Point low = {}, high = {};
    bool any = false;
    for (const Triangles& surface : surfaces) {
        for (const Point& point : surface.points) {
            if (!any) low = high = point;
            any = true;
            for (std::size_t axis = 0; axis < 3; ++axis) {
                low[axis] = std::min(low[axis], point[axis]);
                high[axis] = std::max(high[axis], point[axis]);
            }
        }
    }
    return {(low[0] + high[0]) / 2, (low[1] + high[1]) / 2, (low[2] + high[2]) / 2};
}

SceneSurface Kept(const Triangles& surface, const Point& middle) {
    SceneSurface kept;
    kept.triangles = surface.triangles;
    kept.points.reserve(surface.points.size());
    for (const Point& point : surface.points) {
        auto& near = kept.points.emplace_back();
        for (std::size_t axis = 0; axis < 3; ++axis) {
            near[axis] = static_cast<float>(point[axis] - middle[axis]);
        }
    }
    return kept;
}

}  // namespace

std::size_t SceneBuilder::AddLook(const Look& look) {
    const auto [place, added] = looks.emplace(look, scene.looks.size());
    if (added) scene.looks.push_back(look);
    return place->second;
}

std::optional<std::size_t> SceneBuilder::AddShape(const std::wstring& name,
                                                  const std::vector<Triangles>& surfaces) {
    Shape shape;
    shape.name = name;
    shape.middle = MiddleOf(surfaces);
    for (const Triangles& surface : surfaces) {
        if (surface.triangles.empty()) continue;
        std::optional<std::size_t> look;
        if (surface.look) look = AddLook(*surface.look);
        shape.parts.emplace_back(scene.surfaces.size(), look);
        shape.needsLook |= !surface.look;
        scene.surfaces.push_back(Kept(surface, shape.middle));
    }
    if (shape.parts.empty()) return std::nullopt;
    shapes.push_back(std::move(shape));
    return shapes.size() - 1;
}

std::size_t SceneBuilder::AddNamesake(const std::wstring& name, std::size_t shape) {
    Shape namesake = shapes[shape];
    namesake.name = name;
    shapes.push_back(std::move(namesake));
    return shapes.size() - 1;
}

std::size_t SceneBuilder::AddComponent() {
    scene.components.emplace_back();
    return scene.components.size() - 1;
}

void SceneBuilder::Place(std::size_t component, std::size_t shape, const Transform& toModel,
                         const Look& ownLook) {
    Transform moved = toModel;
    const Point origin = Placed(toModel, shapes[shape].middle);
    for (std::size_t row = 0; row < 3; ++row) moved[row * 4 + 3] = origin[row];
    if (!IsNear(moved)) return;
    if (++placements > mostPlacements) throw std::length_error("too many placements");
    scene.components[component].placements.push_back({MeshOf(shape, ownLook), moved});
}

std::string SceneBuilder::TooManyPlacements() {
    return "its geometries are placed more than " + std::to_string(mostPlacements) + " times";
}

std::size_t SceneBuilder::MeshOf(std::size_t shape, const Look& ownLook) {
    const Shape& source = shapes[shape];
    const std::size_t own = source.needsLook ? AddLook(ownLook) : noLook;
    const auto key = std::make_pair(shape, own);
    const auto [place, added] = meshes.emplace(key, scene.meshes.size());
    if (!added) return place->second;
    SceneMesh& mesh = scene.meshes.emplace_back();
    mesh.name = source.name;
    for (const auto& [surface, look] : source.parts) {
        mesh.parts.push_back({surface, look.value_or(own)});
    }
    return place->second;
}

}  // namespace ZVSmartModel
