#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/import/ImportFindings.h"
#include "model/import/Model.h"
#include "model/import/ModelFile.h"
#include "model/import/mesh/GltfDocument.h"
#include "model/import/mesh/ImageColour.h"

struct aiMaterial;
struct aiScene;

namespace ZVSmartModel {

/// What the meshes of a scene look like. A look here is one colour: textures and the colours of
/// points become their means, of which `findings` is told.
class MeshLooks {
  public:
    /// All must live on. `gltf` is null for other formats, and its meshes are the scene's.
    MeshLooks(const aiScene& scene, std::string_view extension, const GltfDocument* gltf,
              const OpenModelFile& open, ImportFindings& findings)
        : scene(scene), gltf(gltf), open(open), findings(findings), extension(extension) {}

    /// By the mesh's number; none where the file gives it no material and no colour.
    std::optional<Rgba> ColourOf(unsigned int mesh);
    /// Its name is empty where the file gives the mesh none.
    ModelMaterial MaterialOf(unsigned int mesh) const;

  private:
    bool HasMaterial(unsigned int mesh) const;
    /// What glTF says of the mesh's material; null where it has none, and for other formats.
    const GltfMaterial* GltfMaterialOf(unsigned int mesh) const;
    const MeanColour& MaterialColour(unsigned int material);
    /// Both at once.
    MeanColour Product(const MeanColour& a, const MeanColour& b) const;
    MeanColour FactorOf(const aiMaterial& material) const;
    std::optional<MeanColour> TextureOf(const aiMaterial& material);
    std::string BytesAt(const std::string& path) const;

    const aiScene& scene;
    const GltfDocument* gltf;  ///< null for other formats
    const OpenModelFile& open;
    ImportFindings& findings;
    std::string_view extension;
    std::map<std::string, std::optional<MeanColour>> images;
    std::map<unsigned int, MeanColour> colours;  ///< by material
};

}  // namespace ZVSmartModel
