#include "model/scene/SceneBuilder.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace ZVSmartModel {

namespace {

constexpr std::size_t noLook = static_cast<std::size_t>(-1);
constexpr std::uint32_t notKept = 0xFFFFFFFF;

bool IsNear(const std::array<double, 3>& point) {
    return std::all_of(point.begin(), point.end(), [](double value) {
        return std::fabs(value) <= SceneBuilder::farthest;  // false for NaN
    });
}

bool IsShown(const ShapeSurface& surface, const std::array<std::uint32_t, 3>& triangle) {
    const auto [a, b, c] = triangle;
    if (a == b || b == c || c == a) return false;
    return std::all_of(triangle.begin(), triangle.end(), [&](std::uint32_t index) {
        return index < surface.points.size() && IsNear(surface.points[index]);
    });
}

/// The middle of the points that are shown; the origin where none is.
std::array<double, 3> MiddleOf(const std::vector<ShapeSurface>& surfaces) {
    std::array<double, 3> low = {}, high = {};
    bool any = false;
    for (const ShapeSurface& surface : surfaces) {
        for (const auto& triangle : surface.triangles) {
            if (!IsShown(surface, triangle)) continue;
            for (const std::uint32_t index : triangle) {
                const auto& point = surface.points[index];
                if (!any) low = high = point;
                any = true;
                for (std::size_t axis = 0; axis < 3; ++axis) {
                    low[axis] = std::min(low[axis], point[axis]);
                    high[axis] = std::max(high[axis], point[axis]);
                }
            }
        }
    }
    return {(low[0] + high[0]) / 2, (low[1] + high[1]) / 2, (low[2] + high[2]) / 2};
}

SceneSurface Kept(const ShapeSurface& surface, const std::array<double, 3>& middle) {
    SceneSurface kept;
    std::vector<std::uint32_t> newIndex(surface.points.size(), notKept);
    for (const auto& triangle : surface.triangles) {
        if (!IsShown(surface, triangle)) continue;
        auto& added = kept.triangles.emplace_back();
        for (std::size_t corner = 0; corner < 3; ++corner) {
            std::uint32_t& index = newIndex[triangle[corner]];
            if (index == notKept) {
                index = static_cast<std::uint32_t>(kept.points.size());
                auto& point = kept.points.emplace_back();
                for (std::size_t axis = 0; axis < 3; ++axis) {
                    const double value = surface.points[triangle[corner]][axis];
                    point[axis] = static_cast<float>(value - middle[axis]);
                }
            }
            added[corner] = index;
        }
    }
    return kept;
}

}  // namespace

std::size_t SceneBuilder::AddLook(const SceneLook& look) {
    const auto [place, added] = looks.emplace(look, scene.looks.size());
    if (added) scene.looks.push_back(look);
    return place->second;
}

std::optional<std::size_t> SceneBuilder::AddShape(const std::wstring& name,
                                                  const std::vector<ShapeSurface>& surfaces) {
    Shape shape;
    shape.name = name;
    shape.middle = MiddleOf(surfaces);
    for (const ShapeSurface& surface : surfaces) {
        SceneSurface kept = Kept(surface, shape.middle);
        if (kept.triangles.empty()) continue;
        std::optional<std::size_t> look;
        if (surface.look) look = AddLook(*surface.look);
        shape.parts.emplace_back(scene.surfaces.size(), look);
        shape.needsLook |= !surface.look;
        scene.surfaces.push_back(std::move(kept));
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
                         const SceneLook& ownLook) {
    Transform moved = toModel;
    const std::array<double, 3> origin = Placed(toModel, shapes[shape].middle);
    for (std::size_t row = 0; row < 3; ++row) moved[row * 4 + 3] = origin[row];
    const bool near = std::all_of(moved.begin(), moved.end(),
                                  [](double value) { return std::fabs(value) <= farthest; });
    if (!near) return;
    if (++placements > mostPlacements) throw std::length_error("too many placements");
    scene.components[component].placements.push_back({MeshOf(shape, ownLook), moved});
}

std::size_t SceneBuilder::MeshOf(std::size_t shape, const SceneLook& ownLook) {
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
