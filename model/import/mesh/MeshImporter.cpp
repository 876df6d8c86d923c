#include "model/import/mesh/MeshImporter.h"

#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <assimp/BaseImporter.h>
#include <algorithm>
#include <assimp/Importer.hpp>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "model/element/FileName.h"
#include "model/element/Utf8.h"
#include "model/import/ShapeStore.h"
#include "model/import/mesh/GltfDocument.h"
#include "model/import/mesh/MeshFiles.h"
#include "model/import/mesh/MeshLooks.h"
#include "model/import/mesh/MeshNodes.h"

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

Transform TransformOf(const aiMatrix4x4& matrix) {
    Transform transform = {};
    for (unsigned int row = 0; row < 3; ++row) {
        for (unsigned int column = 0; column < 4; ++column) {
            transform[row * 4 + column] = double{matrix[row][column]};
        }
    }
    return transform;
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

StoredProperty MetadataProperty(const std::wstring& name, const aiMetadataEntry& entry) {
    switch (entry.mType) {
        case AI_BOOL:
            return {name, *static_cast<const bool*>(entry.mData) ? L"true" : L"false", L"boolean",
                    L""};
        case AI_INT32:
            return {name, std::to_wstring(*static_cast<const std::int32_t*>(entry.mData)),
                    L"integer", L""};
        case AI_UINT64:
            return {name, std::to_wstring(*static_cast<const std::uint64_t*>(entry.mData)),
                    L"integer", L""};
        case AI_FLOAT:
            return {name, NumberText(double{*static_cast<const float*>(entry.mData)}), L"real",
                    L""};
        case AI_DOUBLE:
            return {name, NumberText(*static_cast<const double*>(entry.mData)), L"real", L""};
        case AI_AISTRING:
            return {name, Wide(*static_cast<const aiString*>(entry.mData)), textKind, L""};
        default:
            return {};
    }
}

MeshNode NodeOf(const aiNode& source, const aiScene& scene) {
    MeshNode node;
    node.name = Wide(source.mName);
    node.toParent = TransformOf(source.mTransformation);
    node.meshes.assign(source.mMeshes, source.mMeshes + source.mNumMeshes);
    if (!node.meshes.empty()) node.meshName = Wide(scene.mMeshes[node.meshes.front()]->mName);
    const unsigned int properties = source.mMetaData ? source.mMetaData->mNumProperties : 0;
    for (unsigned int i = 0; i < properties; ++i) {
        StoredProperty property = MetadataProperty(L"Node." + Wide(source.mMetaData->mKeys[i]),
                                                   source.mMetaData->mValues[i]);
        if (!property.value.empty()) node.properties.push_back(std::move(property));
    }
    return node;
}

/// In a loop, for files may nest nodes deeper than the stack is. The root is the library's own:
/// what it says is not of the model.
std::vector<MeshNode> NodesOf(const aiScene& scene) {
    std::vector<MeshNode> nodes;
    std::vector<std::pair<const aiNode*, std::optional<std::size_t>>> waiting = {
        {scene.mRootNode, std::nullopt}};
    while (!waiting.empty()) {
        const auto [source, parent] = waiting.back();
        waiting.pop_back();
        const std::size_t number = nodes.size();
        nodes.push_back(NodeOf(*source, scene));
        nodes.back().parent = parent;
        for (unsigned int i = source->mNumChildren; i-- > 0;) {
            waiting.emplace_back(source->mChildren[i], number);
        }
    }
    MeshNode& root = nodes.front();
    if (root.meshes.empty()) {
        root.name.clear();
        root.properties.clear();
    }
    return nodes;
}

/// The library numbers meshes in the order in which it comes upon them. It keeps the order of
/// nodes, which tells what is what.
void TakeNumbersOf(const aiScene& scene, GltfDocument& gltf) {
    const std::vector<MeshNode> known = NodesOf(scene);
    const std::size_t added = gltf.roots == 1 ? 0 : 1;  // a root above several
    std::vector<std::optional<std::size_t>> materialOfMesh(scene.mNumMeshes);
    bool same = known.size() == gltf.nodes.size() + added;
    for (std::size_t i = 0; same && i < gltf.nodes.size(); ++i) {
        std::vector<unsigned int>& meshes = gltf.nodes[i].meshes;
        const std::vector<unsigned int>& numbers = known[i + added].meshes;
        same = meshes.size() == numbers.size();
        for (std::size_t k = 0; same && k < meshes.size(); ++k) {
            materialOfMesh[numbers[k]] = gltf.materialOfMesh[meshes[k]];
        }
        meshes = numbers;
    }
    if (!same) throw DamagedModel("damaged glTF: not all of its meshes can be read");
    gltf.materialOfMesh = std::move(materialOfMesh);
}

/// Makes the shapes of each list of meshes once, however many nodes show them.
class ShapesOfMeshes {
  public:
    ShapesOfMeshes(const aiScene& scene, MeshLooks& looks) : scene(scene), looks(looks) {}

    const MeshContent& ContentOf(const std::vector<unsigned int>& meshes) {
        const auto [content, added] = contents.try_emplace(meshes);
        if (added) content->second = Made(meshes);
        return content->second;
    }

    std::vector<ModelShape> Take() { return store.Take(); }

  private:
    MeshContent Made(const std::vector<unsigned int>& meshes) {
        MeshContent content;
        ModelShape shape, lines;
        for (const unsigned int number : meshes) {
            const aiMesh& mesh = *scene.mMeshes[number];
            const ModelMaterial material = looks.MaterialOf(number);
            shape.parts.push_back({looks.ColourOf(number), material.name, {ShellOf(mesh)}});
            AddLines(mesh, lines);
            AddMaterial(material, content);
        }
        for (ModelShape* each : {&shape, &lines}) {
            const auto number = store.Add(*each);
            if (number) content.shapes.push_back(*number);
        }
        return content;
    }

    static void AddMaterial(const ModelMaterial& material, MeshContent& content) {
        const auto& all = content.materials;
        const bool known = std::any_of(all.begin(), all.end(), [&](const ModelMaterial& m) {
            return m.name == material.name;
        });
        if (!known && !material.name.empty()) content.materials.push_back(material);
    }

    const aiScene& scene;
    MeshLooks& looks;
    ShapeStore store;
    std::map<std::vector<unsigned int>, MeshContent> contents;
};

/// What of a scene has no place in a model.
void TellLosses(const aiScene& scene, ImportFindings& findings) {
    std::size_t points = 0, skins = 0, morphs = 0;
    for (unsigned int i = 0; i < scene.mNumMeshes; ++i) {
        const aiMesh& mesh = *scene.mMeshes[i];
        points += static_cast<std::size_t>(
            std::count_if(mesh.mFaces, mesh.mFaces + mesh.mNumFaces,
                          [](const aiFace& face) { return face.mNumIndices == 1; }));
        skins += mesh.mNumBones != 0 ? 1 : 0;
        morphs += mesh.mNumAnimMeshes;
    }
    const auto tell = [&findings](const char* kind, const char* text, bool lost,
                                  std::size_t count) {
        if (count != 0) findings.Add(kind, text, lost, "", count);
    };
    tell("point", "points are left out", true, points);
    tell("skin", "skins are left out: bodies stand as they were modelled", true, skins);
    tell("morph", "other forms of meshes are left out", true, morphs);
    tell("animation", "animations are left out", true, scene.mNumAnimations);
    tell("camera", "cameras are left out", false, scene.mNumCameras);
    tell("light", "lights are left out", false, scene.mNumLights);
}

void CountElements(Model& model) {
    for (const ModelElement& element : model.elements) {
        ImportCount& count = model.findings.elements[ToUtf8(element.entityType)];
        ++count.inModel;
        ++count.arrived;
        if (!element.shapes.empty()) ++count.withBody;
    }
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
            [&](std::string_view wish) { return extensions.contains(std::string(wish)); });
        if (!wanted) importer.UnregisterLoader(importer.GetImporter(i));
    }
}

}  // namespace

Model ImportMesh(const std::string& name, const OpenModelFile& open, const ImportReport& report) {
    const std::string extension = ExtensionOf(name);
    Model model;
    std::optional<GltfDocument> gltf;
    if (extension == "gltf" || extension == "glb") gltf = ReadGltf(*open(""), model.findings);
    Assimp::Importer importer;
    KeepReaders(importer);
    importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, false);
    importer.SetPropertyBool(AI_CONFIG_IMPORT_COLLADA_USE_COLLADA_NAMES, true);
    // The importer owns both from here.
    importer.SetIOHandler(std::make_unique<MeshFiles>(name, open).release());
    importer.SetProgressHandler(std::make_unique<MeshProgress>(report).release());
    const aiScene* scene =
        importer.ReadFile(name, aiProcess_Triangulate | aiProcess_JoinIdenticalVertices);
    if (!scene || !scene->mRootNode) throw DamagedModel(Reason(importer, extension));
    if (gltf) TakeNumbersOf(*scene, *gltf);
    std::vector<MeshNode> nodes = gltf ? std::move(gltf->nodes) : NodesOf(*scene);
    if (nodes.size() == 1 && nodes[0].name.empty()) {
        nodes[0].name = FromUtf8(std::string_view(name).substr(0, name.rfind('.')));
    }
    TellLosses(*scene, model.findings);
    MeshLooks looks(*scene, extension, gltf ? &*gltf : nullptr, open, model.findings);
    ShapesOfMeshes shapes(*scene, looks);
    AddElements(
        std::move(nodes), TransformOf(ToModelAxes(*scene, extension)),
        [&](const std::vector<unsigned int>& meshes) { return shapes.ContentOf(meshes); }, model);
    model.shapes = shapes.Take();
    if (model.shapes.empty()) throw ImportError("the file holds no triangle and no line");
    CountElements(model);
    model.schema.assign(extension.begin(), extension.end());
    return model;
}

}  // namespace ZVSmartModel
