#include "model/preview/Framing.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace ZVSmartModel {

namespace {

constexpr double farApart = 1;  // times the diagonal of what was found
constexpr double small = 0.3;   // times that diagonal

struct PlacedBox {
    SceneBox box;
    std::array<std::array<double, 3>, 8> corners;
    bool found = false;
};

double Diagonal(const SceneBox& box) {
    return std::hypot(box.high[0] - box.low[0], box.high[1] - box.low[1], box.high[2] - box.low[2]);
}

double Distance(const SceneBox& a, const SceneBox& b) {
    std::array<double, 3> gap;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        gap[axis] = std::max({0.0, a.low[axis] - b.high[axis], b.low[axis] - a.high[axis]});
    }
    return std::hypot(gap[0], gap[1], gap[2]);
}

void Extend(SceneBox& box, const SceneBox& other) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        box.low[axis] = std::min(box.low[axis], other.low[axis]);
        box.high[axis] = std::max(box.high[axis], other.high[axis]);
    }
}

PlacedBox BoxOf(const SceneBox& meshBox, const Transform& placement) {
    PlacedBox placed;
    for (unsigned int i = 0; i < 8; ++i) {
        placed.corners[i] = Placed(placement, Corner(meshBox, i));
        const SceneBox corner = {placed.corners[i], placed.corners[i]};
        if (i == 0) placed.box = corner;
        Extend(placed.box, corner);
    }
    return placed;
}

std::vector<PlacedBox> BoxesOf(const Scene& scene) {
    std::vector<SceneBox> meshBoxes;
    meshBoxes.reserve(scene.meshes.size());
    for (const SceneMesh& mesh : scene.meshes) meshBoxes.push_back(BoxOf(scene, mesh));
    std::vector<PlacedBox> boxes;
    for (const SceneComponent& component : scene.components) {
        for (const ScenePlacement& placement : component.placements) {
            boxes.push_back(BoxOf(meshBoxes[placement.mesh], placement.toModel));
        }
    }
    return boxes;
}

/// Marks what belongs to the largest box and returns the box around it.
SceneBox Gather(std::vector<PlacedBox>& boxes) {
    const auto largest = std::max_element(
        boxes.begin(), boxes.end(),
        [](const PlacedBox& a, const PlacedBox& b) { return Diagonal(a.box) < Diagonal(b.box); });
    largest->found = true;
    SceneBox together = largest->box;
    constexpr int mostRounds = 64;  // each round may reach farther
    bool grown = true;
    for (int round = 0; grown && round < mostRounds; ++round) {
        grown = false;
        for (PlacedBox& placed : boxes) {
            if (placed.found) continue;
            if (Distance(placed.box, together) > farApart * Diagonal(together)) continue;
            placed.found = grown = true;
            Extend(together, placed.box);
        }
    }
    return together;
}

}  // namespace

Framing FramingOf(const Scene& scene) {
    std::vector<PlacedBox> boxes = BoxesOf(scene);
    if (boxes.empty()) return {ZVSmartModel::BoxOf(scene), {}};
    const SceneBox together = Gather(boxes);
    const bool restIsSmall = std::all_of(boxes.begin(), boxes.end(), [&](const PlacedBox& placed) {
        return placed.found || Diagonal(placed.box) < small * Diagonal(together);
    });
    Framing framing = {restIsSmall ? together : ZVSmartModel::BoxOf(scene), {}};
    for (const PlacedBox& placed : boxes) {
        if (restIsSmall && !placed.found) continue;
        framing.outline.insert(framing.outline.end(), placed.corners.begin(), placed.corners.end());
    }
    return framing;
}

}  // namespace ZVSmartModel
