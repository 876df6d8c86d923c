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

/// Puts a scene together. Shapes are kept once however often they are placed; their coordinates
/// are stored relative to their middle, so that a shape far from its origin keeps its precision.
class SceneBuilder {
  public:
    /// Keeps a shape, whose triangles can all be drawn (see DropUndrawable); returns its number, or
    /// none where there are none.
    std::optional<std::size_t> AddShape(const std::wstring& name,
                                        const std::vector<Triangles>& surfaces);

    /// Keeps a shape that has another name and is otherwise the same; returns its number.
    std::size_t AddNamesake(const std::wstring& name, std::size_t shape);

    /// Adds a component without a body; returns its number.
    std::size_t AddComponent();

    /// Places a shape as part of a component; what has no look takes `ownLook`. A placement that
    /// holds a number that is not finite or beyond `farthest` is left out. Throws
    /// std::length_error above `mostPlacements`.
    void Place(std::size_t component, std::size_t shape, const Transform& toModel,
               const Look& ownLook);

    Scene Take() { return std::move(scene); }

    static constexpr std::size_t mostPlacements = 4'000'000;
    /// What a file has that holds more.
    static std::string TooManyPlacements();

  private:
    struct Shape {
        std::wstring name;
        std::array<double, 3> middle;
        std::vector<std::pair<std::size_t, std::optional<std::size_t>>> parts;  // surface, look
        bool needsLook = false;
    };

    std::size_t AddLook(const Look& look);
    std::size_t MeshOf(std::size_t shape, const Look& ownLook);

    Scene scene;
    std::map<Look, std::size_t> looks;
    std::vector<Shape> shapes;
    std::map<std::pair<std::size_t, std::size_t>, std::size_t> meshes;  // shape, own look
    std::size_t placements = 0;
};

}  // namespace ZVSmartModel
