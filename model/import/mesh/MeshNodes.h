#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "model/import/Model.h"

namespace ZVSmartModel {

// The nodes of a mesh file, whatever its format, and the elements that they become.

/// What an exported block file says of a floor.
struct ExportedFloor {
    std::uint64_t number = 0;  ///< in the file that was exported
    std::uint64_t order = 0;
    /// Metres.
    /// @{
    double elevation = 0, height = 0;
    /// @}
};

/// What an exported block file says of a building or a site.
struct ExportedOwner {
    std::wstring globalId, name, longName;
};

struct MeshNode {
    std::optional<std::size_t> parent;  ///< stands before it
    std::wstring name, meshName;        ///< may be empty, and may repeat
    Transform toParent = identityTransform;
    std::vector<unsigned int> meshes;  ///< numbers of what it shows
    std::vector<StoredProperty> properties;

    /// What the node was before it was exported, at most one of them.
    /// @{
    std::optional<ModelElement> element;  ///< without shapes, storey and building
    std::optional<ExportedFloor> floor;
    std::optional<ExportedOwner> owner;
    /// @}
};

/// What nodes with the same meshes have in common.
struct MeshContent {
    std::vector<std::size_t> shapes;  ///< numbers in the model
    std::vector<ModelMaterial> materials;
};

/// Gives the content of a node's meshes; asked once for each node that has any.
using MeshContents = std::function<MeshContent(const std::vector<unsigned int>& meshes)>;

/// Adds to `model` the elements, storeys and buildings of `nodes`, of which those without a parent
/// stand in `toModelAxes`.
///
/// A node with a body becomes a "Mesh"; one without becomes a "Node" where it says something, or
/// has a name and holds others. Each belongs to the nearest node above that is an element. Where
/// the file is the export of a block file, the elements that it says it holds come back as they
/// were, on their floors and in their buildings; what is below them without a name and properties
/// is their body.
void AddElements(std::vector<MeshNode> nodes, const Transform& toModelAxes,
                 const MeshContents& contents, Model& model);

}  // namespace ZVSmartModel
