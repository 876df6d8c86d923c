#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "model/import/ImportFindings.h"
#include "model/import/ModelFile.h"
#include "model/import/mesh/MeshNodes.h"

namespace ZVSmartModel {

struct GltfMaterial {
    std::wstring name;
    ModelProperties properties;
    bool blends = false;  ///< whether its alpha means that one sees through it
};

/// What a glTF file says besides the numbers of its meshes.
struct GltfDocument {
    std::vector<MeshNode> nodes;  ///< of the scene in preorder; their meshes are the primitives
    std::size_t roots = 0;        ///< how many of them have no parent
    std::vector<GltfMaterial> materials;
    std::vector<std::optional<std::size_t>> materialOfMesh;  ///< by primitive, of all meshes
};

/// Reads the JSON of a glTF file, text or GLB, and tells `findings` what of it is left out. Nothing
/// where the file is of glTF 1. Throws ImportError for what is damaged, nests too deep, whose
/// nodes are no tree, or that needs an extension which is not read. Fit for hostile files; takes
/// memory in proportion to the file.
std::optional<GltfDocument> ReadGltf(const ModelFile& file, ImportFindings& findings);

}  // namespace ZVSmartModel
