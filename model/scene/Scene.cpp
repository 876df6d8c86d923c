#include "model/scene/Scene.h"

#include <algorithm>
#include <limits>

namespace ZVSmartModel {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr SceneBox nothing = {{infinity, infinity, infinity}, {-infinity, -infinity, -infinity}};

template <typename Point>
void Extend(SceneBox& box, const Point& point) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const auto value = static_cast<double>(point[axis]);
        box.low[axis] = std::min(box.low[axis], value);
        box.high[axis] = std::max(box.high[axis], value);
    }
}

}  // namespace

SceneBox BoxOf(const Scene& scene, const SceneMesh& mesh) {
    SceneBox box = nothing;
    for (const ScenePart& part : mesh.parts) {
        for (const auto& point : scene.surfaces[part.surface].points) Extend(box, point);
    }
    return box;
}

SceneBox BoxOf(const Scene& scene) {
    std::vector<SceneBox> meshBoxes;
    meshBoxes.reserve(scene.meshes.size());
    for (const SceneMesh& mesh : scene.meshes) meshBoxes.push_back(BoxOf(scene, mesh));
    SceneBox box = nothing;
    for (const SceneComponent& component : scene.components) {
        for (const ScenePlacement& placement : component.placements) {
            for (unsigned int i = 0; i < 8; ++i) {
                Extend(box, Placed(placement.toModel, Corner(meshBoxes[placement.mesh], i)));
            }
        }
    }
    return box;
}

std::array<double, 3> Corner(const SceneBox& box, unsigned int number) {
    return {(number & 1U) != 0 ? box.high[0] : box.low[0],
            (number & 2U) != 0 ? box.high[1] : box.low[1],
            (number & 4U) != 0 ? box.high[2] : box.low[2]};
}

}  // namespace ZVSmartModel
