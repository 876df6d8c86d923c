#include "model/import/MeshImporter.h"

#include <assimp/material.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <assimp/BaseImporter.h>
#include <algorithm>
#include <assimp/Importer.hpp>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>

#include "model/element/Utf8.h"
#include "model/import/MeshFiles.h"
#include "model/import/ShapeStore.h"

namespace ZVSmartModel {

namespace {

constexpr std::string_view meshExtensions[] = {"gltf", "glb", "obj", "stl", "ply", "fbx", "dae"};

std::wstring Wide(const aiString& text) {
    return FromUtf8({text.data, text.length});
}

/// Files of other units and axes to metres with Z up.
aiMatrix4x4 ToModelAxes(const aiScene& scene, std::string_view extension) {
    const aiMatrix4x4 fromYUp(1, 0, 0, 0, 0, 0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1);
    if (extension == "stl" || extension == "ply") return {};
    if (extension != "fbx" || !scene.mMetaData) return fromYUp;
    int upAxis = 1;
    scene.mMetaData->Get("UpAxis", upAxis);
    double unitInCentimetres = 1;
    float unitAsFloat = 1;
    if (!scene.mMetaData->Get("UnitScaleFactor", unitInCentimetres) &&
        scene.mMetaData->Get("UnitScaleFactor", unitAsFloat)) {
        unitInCentimetres = unitAsFloat;
    }
    aiMatrix4x4 scale;
    aiMatrix4x4::Scaling(aiVector3D(static_cast<ai_real>(unitInCentimetres / 100)), scale);
    return upAxis == 1 ? scale * fromYUp : scale;
}

Transform PlacementOf(const aiMatrix4x4& matrix) {
    Transform placement = {};
    for (unsigned int row = 0; row < 3; ++row) {
        for (unsigned int column = 0; column < 4; ++column) {
            placement[row * 4 + column] = double{matrix[row][column]};
        }
    }
    return WithoutNoise(placement);
}

std::optional<Rgba> ColourOf(const aiMaterial& material) {
    aiColor4D colour;
    const bool has = material.Get(AI_MATKEY_BASE_COLOR, colour) == aiReturn_SUCCESS ||
                     material.Get(AI_MATKEY_COLOR_DIFFUSE, colour) == aiReturn_SUCCESS;
    if (!has) return std::nullopt;
    float opacity = colour.a;
    material.Get(AI_MATKEY_OPACITY, opacity);
    return MakeColour(double{colour.r}, double{colour.g}, double{colour.b}, double{opacity});
}

ModelShell ShellOf(const aiMesh& mesh) {
    ModelShell shell;
    for (unsigned int i = 0; i < mesh.mNumVertices; ++i) {
        const aiVector3D& v = mesh.mVertices[i];
        shell.points.push_back({double{v.x}, double{v.y}, double{v.z}});
    }
    for (unsigned int i = 0; i < mesh.mNumFaces; ++i) {
        const aiFace& face = mesh.mFaces[i];
        if (face.mNumIndices != 3) continue;
        const unsigned int* corner = face.mIndices;
        const bool inside = std::max({corner[0], corner[1], corner[2]}) < mesh.mNumVertices;
        if (inside) shell.triangles.push_back({corner[0], corner[1], corner[2]});
    }
    return shell;
}

/// The straight lines among a mesh's faces, the only curves that these formats have.
void AddLines(const aiMesh& mesh, ModelShape& shape) {
    ModelCurves lines;
    lines.name = L"lines";
    for (unsigned int i = 0; i < mesh.mNumFaces; ++i) {
        const aiFace& face = mesh.mFaces[i];
        if (face.mNumIndices != 2) continue;
        const unsigned int* end = face.mIndices;
        if (std::max(end[0], end[1]) >= mesh.mNumVertices) continue;
        const aiVector3D& a = mesh.mVertices[end[0]];
        const aiVector3D& b = mesh.mVertices[end[1]];
        lines.segments.push_back(
            {{double{a.x}, double{a.y}, double{a.z}}, {double{b.x}, double{b.y}, double{b.z}}});
    }
    if (!lines.IsEmpty()) shape.curves.push_back(std::move(lines));
}

bool HasPoints(const aiScene& scene) {
    return std::any_of(scene.mMeshes, scene.mMeshes + scene.mNumMeshes, [](const aiMesh* mesh) {
        return (mesh->mPrimitiveTypes & aiPrimitiveType_POINT) != 0;
    });
}

std::wstring MetadataText(const aiMetadataEntry& entry) {
    switch (entry.mType) {
        case AI_BOOL:
            return *static_cast<const bool*>(entry.mData) ? L"true" : L"false";
        case AI_INT32:
            return std::to_wstring(*static_cast<const std::int32_t*>(entry.mData));
        case AI_UINT64:
            return std::to_wstring(*static_cast<const std::uint64_t*>(entry.mData));
        case AI_FLOAT:
            return std::to_wstring(*static_cast<const float*>(entry.mData));
        case AI_DOUBLE:
            return std::to_wstring(*static_cast<const double*>(entry.mData));
        case AI_AISTRING:
            return Wide(*static_cast<const aiString*>(entry.mData));
        default:
            return {};
    }
}

/// Walks one scene and makes its elements.
class SceneReader {
  public:
    explicit SceneReader(const aiScene& scene) : scene(scene) {}

    Model Read(const aiMatrix4x4& toModelAxes) {
        ReadNodes(toModelAxes);
        model.shapes = store.Take();
        return std::move(model);
    }

  private:
    struct Waiting {
        const aiNode* node;
        aiMatrix4x4 toModel;
        std::wstring parentPath;
    };

    /// A loop, for files may nest nodes deeper than the stack is.
    void ReadNodes(const aiMatrix4x4& toModelAxes) {
        std::vector<Waiting> waiting = {{scene.mRootNode, toModelAxes, L""}};
        while (!waiting.empty()) {
            Waiting next = std::move(waiting.back());
            waiting.pop_back();
            next.toModel = next.toModel * next.node->mTransformation;
            ReadNode(*next.node, next.toModel, next.parentPath);
            next.parentPath += L'/' + Wide(next.node->mName);
            for (unsigned int i = next.node->mNumChildren; i-- > 0;) {
                waiting.push_back({next.node->mChildren[i], next.toModel, next.parentPath});
            }
        }
    }

    void ReadNode(const aiNode& node, const aiMatrix4x4& toModel, const std::wstring& parentPath) {
        ModelShape shape, lines;
        ModelElement element;
        for (unsigned int i = 0; i < node.mNumMeshes; ++i) {
            const aiMesh& mesh = *scene.mMeshes[node.mMeshes[i]];
            const aiMaterial& material = *scene.mMaterials[mesh.mMaterialIndex];
            if (element.typeName.empty()) element.typeName = Wide(mesh.mName);
            const std::wstring materialName = FromUtf8(material.GetName().C_Str());
            shape.parts.push_back({ColourOf(material), materialName, {ShellOf(mesh)}});
            AddLines(mesh, lines);
            AddMaterial(element, materialName);
        }
        for (ModelShape* each : {&shape, &lines}) {
            const auto placed = store.Add(std::move(*each));
            if (placed) element.shapes.push_back({*placed, PlacementOf(toModel)});
        }
        if (element.shapes.empty()) return;
        element.globalId = UniqueId(Wide(node.mName));
        element.entityType = L"Mesh";
        AddProperties(node, parentPath, element);
        model.elements.push_back(std::move(element));
    }

    static void AddMaterial(ModelElement& element, const std::wstring& name) {
        const bool known = std::any_of(element.materials.begin(), element.materials.end(),
                                       [&](const ModelMaterial& m) { return m.name == name; });
        if (!known && !name.empty()) element.materials.push_back({name, L"", {}});
    }

    /// Nodes have no identity but their names, which may repeat.
    std::wstring UniqueId(const std::wstring& name) {
        int& timesSeen = timesSeenByName[name];
        std::wstring id = name;
        while (++timesSeen > 1 || id.empty()) {
            id = name + L'#' + std::to_wstring(timesSeen);
            if (takenIds.insert(id).second) return id;
        }
        takenIds.insert(id);
        return id;
    }

    static void AddProperties(const aiNode& node, const std::wstring& parentPath,
                              ModelElement& element) {
        element.properties.emplace_back(L"Element.Name", Wide(node.mName));
        if (!parentPath.empty()) element.properties.emplace_back(L"Element.Path", parentPath);
        if (!node.mMetaData) return;
        for (unsigned int i = 0; i < node.mMetaData->mNumProperties; ++i) {
            const std::wstring value = MetadataText(node.mMetaData->mValues[i]);
            if (value.empty()) continue;
            element.properties.emplace_back(L"Node." + Wide(node.mMetaData->mKeys[i]), value);
        }
    }

    const aiScene& scene;
    ShapeStore store;
    std::map<std::wstring, int> timesSeenByName;
    std::set<std::wstring> takenIds;
    Model model;
};

std::string ExtensionOf(std::string_view path) {
    const std::size_t dot = path.rfind('.');
    std::string extension(dot == std::string_view::npos ? "" : path.substr(dot + 1));
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return extension;
}

/// Of a file that is damaged near its beginning the library says only that it knows no reader.
std::string Reason(const Assimp::Importer& importer, const std::string& extension) {
    const std::string reason = importer.GetErrorString();
    const bool unknown = reason.starts_with("No suitable reader") || reason.empty();
    return unknown ? "damaged, or not a " + extension + " file" : reason;
}

/// Of the library's readers only those for the formats that this tool names: the others are as
/// much code again for a damaged file to fall into.
void KeepReaders(Assimp::Importer& importer) {
    for (std::size_t i = importer.GetImporterCount(); i-- > 0;) {
        std::set<std::string> extensions;
        importer.GetImporter(i)->GetExtensionList(extensions);
        const bool wanted = std::any_of(
            std::begin(meshExtensions), std::end(meshExtensions),
            [&](std::string_view wish) { return extensions.count(std::string(wish)) != 0; });
        if (!wanted) importer.UnregisterLoader(importer.GetImporter(i));
    }
}

}  // namespace

Model ImportMesh(const std::string& name, const OpenModelFile& open, const ImportReport& report) {
    const std::string extension = ExtensionOf(name);
    Assimp::Importer importer;
    KeepReaders(importer);
    // The importer owns both from here.
    importer.SetIOHandler(std::make_unique<MeshFiles>(name, open).release());
    importer.SetProgressHandler(std::make_unique<MeshProgress>(report).release());
    const aiScene* scene =
        importer.ReadFile(name, aiProcess_Triangulate | aiProcess_JoinIdenticalVertices);
    if (!scene || !scene->mRootNode) throw ImportError(Reason(importer, extension));
    if (HasPoints(*scene)) report.warn("points are left out");
    Model model = SceneReader(*scene).Read(ToModelAxes(*scene, extension));
    if (model.elements.empty()) throw ImportError("the file holds no triangle and no line");
    model.schema.assign(extension.begin(), extension.end());
    return model;
}

}  // namespace ZVSmartModel
