#include "model/import/mesh/GltfDocument.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

#include "model/element/Utf8.h"
#include "model/import/ImportReport.h"
#include "model/import/mesh/GltfExtras.h"

namespace ZVSmartModel {

namespace {

using nlohmann::json;

constexpr int deepestJson = 200;          // levels; readers of JSON take each on the stack
constexpr std::size_t deepestNode = 500;  // and so do readers of nodes

[[noreturn]] void Refuse(const std::string& why) {
    throw DamagedModel("damaged glTF: " + why);
}

/// The text of a file: all of it, or a GLB's first chunk. Nothing of a GLB of version 1.
std::optional<std::string> JsonText(const ModelFile& file) {
    std::string head = file.Bytes(0, 20);
    if (!head.starts_with("glTF")) return file.Bytes(0, file.Size());
    if (head.size() < 20) Refuse("it is cut short");
    const auto number = [&head](std::size_t at) {
        std::uint32_t value = 0;
        for (std::size_t i = 4; i-- > 0;) {
            value = value << 8 | static_cast<unsigned char>(head[at + i]);
        }
        return value;
    };
    if (number(4) == 1) return std::nullopt;
    std::string text = file.Bytes(20, number(12));
    if (text.size() < number(12)) Refuse("it is cut short");
    return text;
}

std::optional<std::size_t> IndexOf(const json& object, const char* name) {
    const auto found = object.find(name);
    if (found == object.end()) return std::nullopt;
    if (!found->is_number_unsigned()) Refuse(std::string(name) + " is no number of anything");
    return found->get<std::size_t>();
}

std::vector<std::size_t> IndicesOf(const json& object, const char* name) {
    std::vector<std::size_t> indices;
    const auto found = object.find(name);
    if (found == object.end()) return indices;
    for (const json& index : *found) {
        if (!index.is_number_unsigned()) Refuse(std::string(name) + " are no numbers of anything");
        indices.push_back(index.get<std::size_t>());
    }
    return indices;
}

std::wstring NameOf(const json& object) {
    return FromUtf8(object.value("name", ""));
}

/// Numbers of which there are as many as usual, or which are usual.
template <std::size_t count>
std::array<double, count> NumbersOf(const json& object, const char* name,
                                    const std::array<double, count>& usual) {
    const auto found = object.find(name);
    if (found == object.end()) return usual;
    if (!found->is_array() || found->size() != count) Refuse(std::string("a node's ") + name);
    return found->get<std::array<double, count>>();
}

/// The matrix, by columns in the file, or what stands for it: moved, turned and scaled.
Transform TransformOf(const json& node) {
    if (node.contains("matrix")) {
        const auto m = NumbersOf<16>(node, "matrix", {});
        return {m[0], m[4], m[8], m[12], m[1], m[5], m[9], m[13], m[2], m[6], m[10], m[14]};
    }
    const auto move = NumbersOf<3>(node, "translation", {0, 0, 0});
    const auto scale = NumbersOf<3>(node, "scale", {1, 1, 1});
    auto [x, y, z, w] = NumbersOf<4>(node, "rotation", {0, 0, 0, 1});
    const double length = std::sqrt(x * x + y * y + z * z + w * w);
    if (length > 0) {
        for (double* part : {&x, &y, &z, &w}) *part /= length;
    }
    return {(1 - 2 * (y * y + z * z)) * scale[0], 2 * (x * y - z * w) * scale[1],
            2 * (x * z + y * w) * scale[2],       move[0],
            2 * (x * y + z * w) * scale[0],       (1 - 2 * (x * x + z * z)) * scale[1],
            2 * (y * z - x * w) * scale[2],       move[1],
            2 * (x * z - y * w) * scale[0],       2 * (y * z + x * w) * scale[1],
            (1 - 2 * (x * x + y * y)) * scale[2], move[2]};
}

/// Those that change nothing of what is kept, or that the reader of meshes knows.
bool IsRead(std::string_view extension) {
    constexpr std::string_view read[] = {"KHR_draco_mesh_compression", "KHR_lights_punctual",
                                         "FB_ngon_encoding"};
    if (std::find(std::begin(read), std::end(read), extension) != std::end(read)) return true;
    constexpr std::string_view looks[] = {"KHR_materials_", "KHR_texture_", "EXT_texture_"};
    return std::any_of(std::begin(looks), std::end(looks),
                       [&](std::string_view start) { return extension.starts_with(start); });
}

/// Takes each object out of the large arrays as soon as it is read, so that the whole never stands
/// in memory at once.
class DocumentReader {
  public:
    json Read(const std::string& text) {
        return json::parse(text, [this](int depth, json::parse_event_t event, json& value) {
            if (depth > deepestJson) throw DamagedModel("its JSON nests too deep");
            if (depth != 1 && depth != 2) return true;
            if (depth == 1 && event == json::parse_event_t::key) section = value;
            if (depth == 1 && event == json::parse_event_t::array_start) inArray = true;
            if (depth == 1 && event == json::parse_event_t::array_end) inArray = false;
            return !(depth == 2 && inArray && event == json::parse_event_t::object_end &&
                     Take(value));
        });
    }

    struct Node {
        std::vector<std::size_t> children;
        std::optional<std::size_t> mesh;
        MeshNode node;
    };
    struct Mesh {
        std::wstring name;
        std::size_t firstPrimitive = 0, primitives = 0;
        std::vector<StoredProperty> properties;
    };

    std::vector<Node> nodes;
    std::vector<Mesh> meshes;
    std::vector<GltfMaterial> materials;
    std::vector<std::optional<std::size_t>> materialOfPrimitive;

    /// The places of points must be what the reader of meshes takes them for.
    void CheckPoints() const {
        for (const std::size_t accessor : pointAccessors) {
            if (accessor >= isPoints.size() || !isPoints[accessor]) {
                throw ImportError("its points are no triples of 32-bit floating point numbers");
            }
        }
    }

  private:
    /// Whether nothing is left to keep of an object.
    bool Take(const json& object) {
        if (section == "nodes") {
            TakeNode(object);
        } else if (section == "meshes") {
            TakeMesh(object);
        } else if (section == "materials") {
            TakeMaterial(object);
        } else if (section == "accessors") {
            constexpr int floats = 5126;
            isPoints.push_back(object.value("componentType", 0) == floats &&
                               object.value("type", "") == "VEC3");
        } else {
            constexpr std::string_view unused[] = {"buffers", "bufferViews", "images", "animations",
                                                   "skins"};
            return std::find(std::begin(unused), std::end(unused), section) != std::end(unused);
        }
        return true;
    }

    void TakeNode(const json& object) {
        Node& added = nodes.emplace_back();
        added.children = IndicesOf(object, "children");
        added.mesh = IndexOf(object, "mesh");
        added.node.name = NameOf(object);
        added.node.toParent = TransformOf(object);
        if (object.contains("extras")) TakeExtras(object["extras"], added.node);
    }

    void TakeMesh(const json& object) {
        Mesh& added = meshes.emplace_back();
        added.name = NameOf(object);
        added.firstPrimitive = materialOfPrimitive.size();
        if (object.contains("primitives")) {
            for (const json& primitive : object["primitives"]) {
                ++added.primitives;
                materialOfPrimitive.push_back(IndexOf(primitive, "material"));
                const json attributes = primitive.value("attributes", json::object());
                const auto points = IndexOf(attributes, "POSITION");
                if (points) pointAccessors.push_back(*points);
            }
        }
        if (object.contains("extras")) AddExtras(object["extras"], L"Mesh", added.properties);
    }

    void TakeMaterial(const json& object) {
        GltfMaterial& added = materials.emplace_back();
        added.name = NameOf(object);
        added.blends = object.value("alphaMode", "") == "BLEND";
        if (!object.contains("extras")) return;
        std::vector<StoredProperty> properties;
        AddExtras(object["extras"], L"Material", properties);
        added.properties = PairsOf(properties);
    }

    std::string section;
    bool inArray = false;
    std::vector<bool> isPoints;
    std::vector<std::size_t> pointAccessors;
};

/// Brings the nodes of the scene into order, each behind its parent.
class SceneOrder {
  public:
    explicit SceneOrder(DocumentReader& read) : read(read), isChild(read.nodes.size()) {
        for (const auto& node : read.nodes) {
            for (const std::size_t child : node.children) {
                if (child >= isChild.size()) Refuse("a node has a child that is not there");
                if (isChild[child]) Refuse("its nodes are no tree");
                isChild[child] = true;
            }
        }
    }

    /// Hands out the nodes below `roots`.
    std::vector<MeshNode> Take(const std::vector<std::size_t>& roots) {
        std::vector<MeshNode> ordered;
        std::vector<Waiting> waiting;
        for (auto root = roots.rbegin(); root != roots.rend(); ++root) {
            // A root is nobody's child, so that no walk that begins there comes back.
            if (*root >= isChild.size() || isChild[*root])
                Refuse("a root of its scene is below another node");
            isChild[*root] = true;
            waiting.push_back({*root, std::nullopt, 1});
        }
        while (!waiting.empty()) {
            const Waiting next = waiting.back();
            waiting.pop_back();
            if (next.depth > deepestNode) throw DamagedModel("its nodes nest too deep");
            DocumentReader::Node& source = read.nodes[next.node];
            const std::size_t number = ordered.size();
            ordered.push_back(std::move(source.node));
            ordered.back().parent = next.parent;
            if (source.mesh) AddMesh(*source.mesh, ordered.back());
            for (auto child = source.children.rbegin(); child != source.children.rend(); ++child) {
                waiting.push_back({*child, number, next.depth + 1});
            }
        }
        return ordered;
    }

  private:
    struct Waiting {
        std::size_t node;
        std::optional<std::size_t> parent;
        std::size_t depth;
    };

    void AddMesh(std::size_t number, MeshNode& node) const {
        if (number >= read.meshes.size()) Refuse("a node shows a mesh that is not there");
        const DocumentReader::Mesh& mesh = read.meshes[number];
        node.meshName = mesh.name;
        for (std::size_t i = 0; i < mesh.primitives; ++i) {
            node.meshes.push_back(static_cast<unsigned int>(mesh.firstPrimitive + i));
        }
        node.properties.insert(node.properties.end(), mesh.properties.begin(),
                               mesh.properties.end());
    }

    DocumentReader& read;
    std::vector<bool> isChild;
};

void TellExtensions(const json& whole, ImportFindings& findings) {
    for (const char* list : {"extensionsRequired", "extensionsUsed"}) {
        if (!whole.contains(list)) continue;
        for (const json& each : whole[list]) {
            const auto name = each.get<std::string>();
            if (IsRead(name)) continue;
            if (std::string_view(list) == "extensionsRequired") {
                throw ImportError("it needs the extension " + name + ", which is not read");
            }
            findings.Add("extension", "the extension " + name + " is not read", true, "");
        }
    }
}

GltfDocument DocumentOf(DocumentReader& read, const json& whole, ImportFindings& findings) {
    TellExtensions(whole, findings);
    read.CheckPoints();
    GltfDocument document;
    const std::size_t scene = IndexOf(whole, "scene").value_or(0);
    const json scenes = whole.value("scenes", json::array());
    if (scene >= scenes.size()) Refuse("it holds no scene");
    const std::vector<std::size_t> roots = IndicesOf(scenes[scene], "nodes");
    document.nodes = SceneOrder(read).Take(roots);
    document.roots = roots.size();
    document.materials = std::move(read.materials);
    document.materialOfMesh = std::move(read.materialOfPrimitive);
    const std::size_t others = scenes.size() - 1;
    if (others != 0)
        findings.Add("scene", "scenes besides the first are left out", true, "", others);
    return document;
}

}  // namespace

std::optional<GltfDocument> ReadGltf(const ModelFile& file, ImportFindings& findings) {
    const std::optional<std::string> text = JsonText(file);
    if (!text) return std::nullopt;
    try {
        DocumentReader read;
        const json whole = read.Read(*text);
        if (!whole.is_object() || !whole.contains("asset")) Refuse("it says nothing of itself");
        if (whole["asset"].value("version", "").starts_with('1')) return std::nullopt;
        return DocumentOf(read, whole, findings);
    } catch (const json::parse_error& error) {
        Refuse("its JSON ends or breaks at byte " + std::to_string(error.byte));
    } catch (const json::exception&) {
        Refuse("a value in it is of the wrong kind or too large");
    }
}

}  // namespace ZVSmartModel
