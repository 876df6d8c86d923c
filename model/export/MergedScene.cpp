#include "model/export/MergedScene.h"

#include <map>
#include <utility>

#include "model/element/Utf8.h"
#include "model/scene/SceneBuilder.h"
#include "model/scene/TriangleLists.h"

namespace ZVSmartModel {

namespace {

Triangles TrianglesOf(const SceneSurface& surface) {
    Triangles triangles;
    triangles.triangles = surface.triangles;
    triangles.points.reserve(surface.points.size());
    for (const auto& [x, y, z] : surface.points) triangles.points.push_back({x, y, z});
    return triangles;
}

/// The groups that hold no component themselves, and for each old group the number of its first
/// ancestor among them.
std::vector<std::optional<std::size_t>> KeepFloors(ExportModel& model) {
    std::vector<bool> holds(model.groups.size());
    for (const ExportComponent& component : model.components) holds[component.group] = true;
    std::vector<std::optional<std::size_t>> newNumber;
    std::vector<ExportGroup> kept;
    for (std::size_t i = 0; i < model.groups.size(); ++i) {
        ExportGroup& group = model.groups[i];
        if (group.parent) group.parent = newNumber[*group.parent];
        if (holds[i]) {
            newNumber.push_back(group.parent);
            continue;
        }
        newNumber.emplace_back(kept.size());
        kept.push_back(std::move(group));
    }
    model.groups = std::move(kept);
    return newNumber;
}

}  // namespace

void ChargePlacedPoints(const Scene& scene, Budget& limits, bool keepsPoints) {
    constexpr unsigned int stepsOfPoint = 40, stepsOfTriangle = 10;
    constexpr std::uint64_t bytesOfPoint = 60, bytesOfTriangle = 40;
    constexpr std::uint64_t mostPoints = 100'000'000;
    std::uint64_t points = 0;
    for (const SceneComponent& component : scene.components) {
        for (const ScenePlacement& placement : component.placements) {
            for (const ScenePart& part : scene.meshes[placement.mesh].parts) {
                const SceneSurface& surface = scene.surfaces[part.surface];
                const std::uint64_t triangles = surface.triangles.size();
                points += surface.points.size();
                limits.Work(stepsOfPoint * surface.points.size() + stepsOfTriangle * triangles);
                if (!keepsPoints) continue;
                limits.Memory(bytesOfPoint * surface.points.size() + bytesOfTriangle * triangles);
            }
        }
    }
    if (points <= mostPoints) return;
    throw Error(Status::InputOutput,
                "the model is too large where each placement is written out; GLB without merging "
                "does not do that");
}

void MergeByLook(ExportModel& model, Budget& limits) {
    ChargePlacedPoints(model.scene, limits, true);
    const Scene source = std::move(model.scene);
    const std::vector<std::optional<std::size_t>> floorOf = KeepFloors(model);
    std::map<std::pair<std::size_t, std::size_t>, Triangles> merged;  // by floor and look
    for (std::size_t i = 0; i < source.components.size(); ++i) {
        const std::size_t floor = floorOf[model.components[i].group].value_or(0);
        for (const ScenePlacement& placement : source.components[i].placements) {
            for (const ScenePart& part : source.meshes[placement.mesh].parts) {
                AddPlaced(merged[{floor, part.look}], TrianglesOf(source.surfaces[part.surface]),
                          placement.toModel);
            }
        }
    }
    model.components.clear();
    SceneBuilder builder;
    for (auto& [place, triangles] : merged) {
        const Look& look = source.looks[place.second];
        triangles.look = look;
        const std::size_t component = builder.AddComponent();
        model.components.push_back({place.first, look.name, nullptr});
        const auto shape = builder.AddShape(FromUtf8(look.name), {std::move(triangles)});
        if (shape) builder.Place(component, *shape, identityTransform, look);
    }
    model.scene = builder.Take();
}

}  // namespace ZVSmartModel
