#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "model/scene/Scene.h"

namespace ZVSmartModel {

/// The look of what has none.
inline const SceneLook plainLook = {L"", {0xC8, 0xC8, 0xC8, 0xFF}};

/// Triangles of one look in a shape's own coordinates.
struct ShapeSurface {
    std::optional<SceneLook> look;  ///< none takes the look of the component that places it
    std::vector<std::array<double, 3>> points;
    std::vector<std::array<std::uint32_t, 3>> triangles;
};

/// Puts a scene together. Shapes are kept once however often they are placed; their coordinates
/// are stored relative to their middle, so that a shape far from its origin keeps its precision.
class SceneBuilder {
  public:
    /// Keeps a shape; returns its number, or none where there is nothing to show. Triangles whose
    /// indices lead nowhere, and those with a coordinate that is not finite or beyond
    /// `farthest`, are left out.
    std::optional<std::size_t> AddShape(const std::wstring& name,
                                        const std::vector<ShapeSurface>& surfaces);

    /// Keeps a shape that has another name and is otherwise the same; returns its number.
    std::size_t AddNamesake(const std::wstring& name, std::size_t shape);

    /// Adds a component without a body; returns its number.
    std::size_t AddComponent();

    /// Places a shape as part of a component; what has no look takes `ownLook`. A placement that
    /// holds a number that is not finite or beyond `farthest` is left out. Throws
    /// std::length_error above `mostPlacements`.
    void Place(std::size_t component, std::size_t shape, const Transform& toModel,
               const SceneLook& ownLook);

    Scene Take() { return std::move(scene); }

    static constexpr double farthest = 1e12;
    static constexpr std::size_t mostPlacements = 4'000'000;

  private:
    struct Shape {
        std::wstring name;
        std::array<double, 3> middle;
        std::vector<std::pair<std::size_t, std::optional<std::size_t>>> parts;  // surface, look
        bool needsLook = false;
    };

    std::size_t AddLook(const SceneLook& look);
    std::size_t MeshOf(std::size_t shape, const SceneLook& ownLook);

    Scene scene;
    std::map<SceneLook, std::size_t> looks;
    std::vector<Shape> shapes;
    std::map<std::pair<std::size_t, std::size_t>, std::size_t> meshes;  // shape, own look
    std::size_t placements = 0;
};

}  // namespace ZVSmartModel
