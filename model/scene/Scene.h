#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "ZVSmartModel/Body.h"
#include "model/scene/PointMath.h"

namespace ZVSmartModel {

// A model as it is shown: triangles, what they look like, and where they are. Lengths are those
// of the model, Z is up.

/// Triangles, counter-clockwise as seen from outside where the model is right. All numbers are
/// finite and all indices lead to points.
struct SceneSurface {
    std::vector<std::array<float, 3>> points;  ///< in the coordinates of the mesh
    std::vector<std::array<std::uint32_t, 3>> triangles;
    // What exports add where it is wanted.
    std::vector<std::array<float, 3>> normals;        ///< of each point, of length 1; or none
    std::vector<std::array<std::uint32_t, 2>> edges;  ///< lines from point to point
};

struct ScenePart {
    std::size_t surface = 0;  ///< index into Scene::surfaces
    std::size_t look = 0;     ///< index into Scene::looks
};

/// What is placed as one piece. Meshes that differ in looks alone share their surfaces.
struct SceneMesh {
    std::wstring name;
    std::vector<ScenePart> parts;  ///< at least one
};

struct ScenePlacement {
    std::size_t mesh = 0;  ///< index into Scene::meshes
    Transform toModel = identityTransform;
};

struct SceneComponent {
    std::vector<ScenePlacement> placements;
};

struct Scene {
    std::vector<Look> looks;
    std::vector<SceneSurface> surfaces;
    std::vector<SceneMesh> meshes;
    std::vector<SceneComponent> components;
};

/// A box around nothing has `low` above `high`.
struct SceneBox {
    std::array<double, 3> low{}, high{};

    bool IsEmpty() const { return !(low[0] <= high[0]); }
};

/// The box around everything that is placed, exact for meshes that are not turned and generous
/// for others.
SceneBox BoxOf(const Scene& scene);

/// The box around a mesh, in its own coordinates.
SceneBox BoxOf(const Scene& scene, const SceneMesh& mesh);

/// A corner of a box, `number` 0 to 7.
std::array<double, 3> Corner(const SceneBox& box, unsigned int number);

}  // namespace ZVSmartModel
