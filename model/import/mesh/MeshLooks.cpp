#include "model/import/mesh/MeshLooks.h"

#include <assimp/material.h>
#include <assimp/mesh.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cmath>

#include "ZVSmartModel/Body.h"
#include "model/element/Utf8.h"

namespace ZVSmartModel {

namespace {

constexpr std::uint64_t mostImageBytes = 256 << 20;

/// The path without backslashes; empty where it leads out of the model's folder, as those of other
/// machines do.
std::string PathInFolder(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    if (path.starts_with("file://")) path.erase(0, 7);
    if (path.empty() || path.front() == '/' || path.find(':') != std::string::npos) return {};
    int depth = 0;
    for (std::size_t at = 0; at <= path.size();) {
        const std::size_t end = std::min(path.find('/', at), path.size());
        const std::string_view part(path.data() + at, end - at);
        if (part == "..") --depth;
        if (!part.empty() && part != "." && part != "..") ++depth;
        if (depth < 0) return {};
        at = end + 1;
    }
    return path;
}

/// The mean of the points' colours, as they are stored; none where they have none.
std::optional<MeanColour> MeanOfPoints(const aiMesh& mesh, bool& differ) {
    const aiColor4D* const colours = mesh.mColors[0];
    if (colours == nullptr || mesh.mNumVertices == 0) return std::nullopt;
    std::array<double, 4> sum = {};
    for (unsigned int i = 0; i < mesh.mNumVertices; ++i) {
        const aiColor4D& colour = colours[i];
        differ = differ || colour != colours[0];
        const std::array<float, 4> parts = {colour.r, colour.g, colour.b, colour.a};
        for (std::size_t part = 0; part < 4; ++part) {
            const auto value = double{parts[part]};
            sum[part] += std::isfinite(value) ? std::clamp(value, 0.0, 1.0) : 0;
        }
    }
    for (double& part : sum) part /= mesh.mNumVertices;
    return MeanColour{{sum[0], sum[1], sum[2]}, sum[3]};
}

/// Stored parts of a colour as light.
MeanColour InLight(MeanColour stored) {
    for (double& part : stored.light) part = LightOf(part);
    return stored;
}

}  // namespace

const GltfMaterial* MeshLooks::GltfMaterialOf(unsigned int mesh) const {
    if (gltf == nullptr || !gltf->materialOfMesh[mesh]) return nullptr;
    const std::size_t material = *gltf->materialOfMesh[mesh];
    return material < gltf->materials.size() ? &gltf->materials[material] : nullptr;
}

bool MeshLooks::HasMaterial(unsigned int mesh) const {
    const unsigned int material = scene.mMeshes[mesh]->mMaterialIndex;
    if (material >= scene.mNumMaterials) return false;
    if (gltf != nullptr) return GltfMaterialOf(mesh) != nullptr;
    // The library makes one of this name for what has none.
    return std::string_view(scene.mMaterials[material]->GetName().C_Str()) !=
           AI_DEFAULT_MATERIAL_NAME;
}

ModelMaterial MeshLooks::MaterialOf(unsigned int mesh) const {
    if (!HasMaterial(mesh)) return {};
    if (const GltfMaterial* const material = GltfMaterialOf(mesh)) {
        return {material->name, L"", material->properties};
    }
    const aiMaterial& material = *scene.mMaterials[scene.mMeshes[mesh]->mMaterialIndex];
    return {FromUtf8(material.GetName().C_Str()), L"", {}};
}

MeanColour MeshLooks::Product(const MeanColour& a, const MeanColour& b) const {
    MeanColour product;
    for (std::size_t i = 0; i < 3; ++i) {
        product.light[i] = gltf != nullptr ? a.light[i] * b.light[i]
                                           : LightOf(StoredOf(a.light[i]) * StoredOf(b.light[i]));
    }
    product.alpha = a.alpha * b.alpha;
    return product;
}

MeanColour MeshLooks::FactorOf(const aiMaterial& material) const {
    aiColor4D colour(1, 1, 1, 1);
    if (material.Get(AI_MATKEY_BASE_COLOR, colour) != aiReturn_SUCCESS) {
        material.Get(AI_MATKEY_COLOR_DIFFUSE, colour);
    }
    float opacity = colour.a;
    material.Get(AI_MATKEY_OPACITY, opacity);
    const MeanColour factor = {{double{colour.r}, double{colour.g}, double{colour.b}},
                               double{opacity}};
    return gltf != nullptr ? factor : InLight(factor);
}

std::string MeshLooks::BytesAt(const std::string& path) const {
    if (const aiTexture* const texture = scene.GetEmbeddedTexture(path.c_str())) {
        const bool isFile = texture->mHeight == 0 && texture->pcData != nullptr;
        return isFile ? std::string(reinterpret_cast<const char*>(texture->pcData), texture->mWidth)
                      : std::string();
    }
    const std::string name = PathInFolder(path);
    const std::optional<ModelFile> file = name.empty() ? std::nullopt : open(name);
    return file && file->Size() <= mostImageBytes ? file->Bytes(0, file->Size()) : std::string();
}

std::optional<MeanColour> MeshLooks::TextureOf(const aiMaterial& material) {
    aiString path;
    const bool has = material.GetTexture(aiTextureType_BASE_COLOR, 0, &path) == aiReturn_SUCCESS ||
                     material.GetTexture(aiTextureType_DIFFUSE, 0, &path) == aiReturn_SUCCESS;
    if (!has) return std::nullopt;
    const auto [image, added] = images.try_emplace(path.C_Str());
    if (added) image->second = MeanOfImage(BytesAt(path.C_Str()));
    if (image->second) {
        findings.Add("texture", "textures became their mean colours", true, "");
    } else {
        findings.Add("textureMissing", "textures are not there or cannot be read", true, "");
    }
    return image->second;
}

const MeanColour& MeshLooks::MaterialColour(unsigned int material) {
    const auto [place, added] = colours.try_emplace(material);
    MeanColour& colour = place->second;
    if (!added) return colour;
    const MeanColour factor = FactorOf(*scene.mMaterials[material]);
    const auto texture = TextureOf(*scene.mMaterials[material]);
    // Elsewhere a texture stands in place of the colour, which is then whatever it happens to be.
    const bool multiplies = gltf != nullptr || extension == "obj";
    colour = !texture ? factor : multiplies ? Product(factor, *texture) : *texture;
    if (gltf == nullptr) colour.alpha = factor.alpha;
    return colour;
}

std::optional<Rgba> MeshLooks::ColourOf(unsigned int mesh) {
    bool differ = false;
    const auto points = MeanOfPoints(*scene.mMeshes[mesh], differ);
    if (differ) findings.Add("pointColour", "the colours of points became their means", true, "");
    const bool hasMaterial = HasMaterial(mesh);
    if (!points && !hasMaterial) return std::nullopt;
    MeanColour colour;
    if (hasMaterial) colour = MaterialColour(scene.mMeshes[mesh]->mMaterialIndex);
    if (points) colour = Product(colour, gltf != nullptr ? *points : InLight(*points));
    const GltfMaterial* const said = GltfMaterialOf(mesh);
    if (gltf != nullptr && !(said != nullptr && said->blends)) colour.alpha = 1;
    const auto& [red, green, blue] = colour.light;
    const Rgba seen = MakeColour(StoredOf(red), StoredOf(green), StoredOf(blue), colour.alpha);
    // Exports give what has no look the one that it is shown with, without a name.
    if (gltf != nullptr && seen == Look().colour && MaterialOf(mesh).name.empty()) {
        return std::nullopt;
    }
    return seen;
}

}  // namespace ZVSmartModel
