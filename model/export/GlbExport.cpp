#include "model/export/GlbExport.h"

#include <tiny_gltf.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <streambuf>

#include "ZVSmartModel/Error.h"
#include "ZVSmartModel/Exports.h"
#include "model/element/Utf8.h"
#include "model/export/NodeTransform.h"

namespace ZVSmartModel {

namespace {

constexpr double farFromOrigin = 10000;                          // beyond it single precision shows
constexpr std::uint64_t mostBytes = 0xFFFFFFFFULL - (64 << 20);  // leaves room for the nodes

/// Hands everything on to a stream of ours.
class StreamBuffer : public std::streambuf {
  public:
    explicit StreamBuffer(ZVSmartFormat::CZVFTOutStream& out) : out(out) {}

  protected:
    std::streamsize xsputn(const char* bytes, std::streamsize count) override {
        return static_cast<std::streamsize>(out.Write(bytes, static_cast<std::uint64_t>(count)));
    }

    int_type overflow(int_type character) override {
        const char byte = traits_type::to_char_type(character);
        return out.Write(&byte, 1) == 1 ? character : traits_type::eof();
    }

  private:
    ZVSmartFormat::CZVFTOutStream& out;
};

tinygltf::Value NumberOf(std::int64_t number) {
    const bool fits = number >= INT32_MIN && number <= INT32_MAX;
    return fits ? tinygltf::Value(static_cast<int>(number))
                : tinygltf::Value(static_cast<double>(number));
}

/// Extras nest a few levels, which are ours.
// NOLINTNEXTLINE(misc-no-recursion)
tinygltf::Value ValueOf(const Extras& extras) {
    if (extras.is_string()) return tinygltf::Value(extras.get<std::string>());
    if (extras.is_number_float()) return tinygltf::Value(extras.get<double>());
    if (extras.is_number()) return NumberOf(extras.get<std::int64_t>());
    if (extras.is_array()) {
        tinygltf::Value::Array array;
        for (const Extras& element : extras) array.push_back(ValueOf(element));
        return tinygltf::Value(std::move(array));
    }
    tinygltf::Value::Object object;
    for (const auto& [name, member] : extras.items()) object[name] = ValueOf(member);
    return tinygltf::Value(std::move(object));
}

double Linear(std::uint8_t stored) {
    const double value = stored / 255.0;
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

tinygltf::Material MaterialOf(const Look& look) {
    tinygltf::Material material;
    material.name = look.name;
    const Rgba& c = look.colour;
    auto& surface = material.pbrMetallicRoughness;
    surface.baseColorFactor = {Linear(c.red), Linear(c.green), Linear(c.blue), c.alpha / 255.0};
    surface.metallicFactor = 0;
    surface.roughnessFactor = 0.9;
    material.doubleSided = true;
    if (c.alpha != 0xFF) material.alphaMode = "BLEND";
    return material;
}

/// Surfaces as accessors into one buffer: all points, then all short indices, then the long ones.
class BufferWriter {
  public:
    explicit BufferWriter(tinygltf::Model& gltf) : gltf(gltf) {}

    void AddSurfaces(const std::vector<SceneSurface>& surfaces) {
        CheckSize(surfaces);
        gltf.buffers.emplace_back();
        BeginView(TINYGLTF_TARGET_ARRAY_BUFFER, 12);
        for (const SceneSurface& surface : surfaces) AddPoints(surface);
        EndView();
        indices.resize(surfaces.size());
        AddAllIndices<std::uint16_t>(surfaces, TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT);
        AddAllIndices<std::uint32_t>(surfaces, TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT);
    }

    int PointsOf(std::size_t surface) const { return static_cast<int>(surface); }
    int IndicesOf(std::size_t surface) const { return indices[surface]; }

  private:
    static bool IsShort(const SceneSurface& surface) { return surface.points.size() < 0xFFFF; }

    static void CheckSize(const std::vector<SceneSurface>& surfaces) {
        std::uint64_t bytes = 0;
        for (const SceneSurface& surface : surfaces) {
            bytes += surface.points.size() * 12 + surface.triangles.size() * 12;
        }
        if (bytes <= mostBytes) return;
        throw Error(Status::InputOutput, "the model is too large for one GLB file");
    }

    std::vector<unsigned char>& Bytes() { return gltf.buffers[0].data; }

    void BeginView(int target, std::size_t stride) {
        view = {};
        view.buffer = 0;
        view.byteOffset = Bytes().size();
        view.byteStride = stride;
        view.target = target;
    }

    /// A view of nothing is not written.
    void EndView() {
        view.byteLength = Bytes().size() - view.byteOffset;
        while (Bytes().size() % 4 != 0) Bytes().push_back(0);
        if (view.byteLength != 0) gltf.bufferViews.push_back(view);
    }

    void Append(const void* bytes, std::size_t count) {
        const auto* const first = static_cast<const unsigned char*>(bytes);
        Bytes().insert(Bytes().end(), first, first + count);
    }

    tinygltf::Accessor& AddAccessor(int type, int componentType, std::size_t count) {
        tinygltf::Accessor& accessor = gltf.accessors.emplace_back();
        accessor.bufferView = static_cast<int>(gltf.bufferViews.size());
        accessor.byteOffset = Bytes().size() - view.byteOffset;
        accessor.type = type;
        accessor.componentType = componentType;
        accessor.count = count;
        return accessor;
    }

    void AddPoints(const SceneSurface& surface) {
        tinygltf::Accessor& accessor =
            AddAccessor(TINYGLTF_TYPE_VEC3, TINYGLTF_COMPONENT_TYPE_FLOAT, surface.points.size());
        std::array<float, 3> low = surface.points.front(), high = low;
        for (const auto& point : surface.points) {
            for (std::size_t axis = 0; axis < 3; ++axis) {
                low[axis] = std::min(low[axis], point[axis]);
                high[axis] = std::max(high[axis], point[axis]);
            }
        }
        accessor.minValues.assign(low.begin(), low.end());
        accessor.maxValues.assign(high.begin(), high.end());
        Append(surface.points.data(), surface.points.size() * 12);
    }

    template <typename Index>
    void AddAllIndices(const std::vector<SceneSurface>& surfaces, int componentType) {
        BeginView(TINYGLTF_TARGET_ELEMENT_ARRAY_BUFFER, 0);
        for (std::size_t i = 0; i < surfaces.size(); ++i) {
            if (IsShort(surfaces[i]) != (sizeof(Index) == 2)) continue;
            const auto& triangles = surfaces[i].triangles;
            indices[i] = static_cast<int>(gltf.accessors.size());
            AddAccessor(TINYGLTF_TYPE_SCALAR, componentType, triangles.size() * 3);
            for (const auto& triangle : triangles) {
                for (const std::uint32_t corner : triangle) {
                    const auto index = static_cast<Index>(corner);
                    Append(&index, sizeof index);
                }
            }
        }
        EndView();
    }

    tinygltf::Model& gltf;
    tinygltf::BufferView view;
    std::vector<int> indices;
};

class NodeWriter {
  public:
    NodeWriter(const ExportModel& model, tinygltf::Model& gltf, ProgressPace& pace)
        : model(model), gltf(gltf), pace(pace) {}

    void AddAll() {
        AddRoot();
        const auto firstGroup = gltf.nodes.size();
        for (const ExportGroup& group : model.groups) {
            const std::size_t parent = group.parent ? firstGroup + *group.parent : 0;
            AddNode(parent, group.name, group.extras);
        }
        for (std::size_t i = 0; i < model.components.size(); ++i) {
            pace.Tell("writing", i, model.components.size());
            const ExportComponent& component = model.components[i];
            const std::size_t node =
                AddNode(firstGroup + component.group, component.name, component.extras);
            AddBody(node, model.scene.components[i].placements);
        }
    }

  private:
    /// Turns Z up into Y up. A model far from its origin is moved there and back: numbers of
    /// single precision then have no coordinates of the country's grid to hold.
    void AddRoot() {
        const SceneBox box = BoxOf(model.scene);
        for (std::size_t axis = 0; axis < 3 && !box.IsEmpty(); ++axis) {
            const double middle = (box.low[axis] + box.high[axis]) / 2;
            if (std::fabs(middle) > farFromOrigin) origin[axis] = std::round(middle);
        }
        tinygltf::Node& root = gltf.nodes.emplace_back();
        root.name = model.name;
        root.rotation = {-std::sqrt(0.5), 0, 0, std::sqrt(0.5)};
        const bool moved = origin != std::array<double, 3>{};
        if (moved) root.translation = {origin[0], origin[2], -origin[1]};
    }

    std::size_t AddNode(std::size_t parent, const std::string& name, const Extras& extras) {
        const std::size_t number = gltf.nodes.size();
        tinygltf::Node& node = gltf.nodes.emplace_back();
        node.name = name;
        if (!extras.is_null()) node.extras = ValueOf(extras);
        gltf.nodes[parent].children.push_back(static_cast<int>(number));
        return number;
    }

    /// One placement is the component's own; several are nodes below it.
    void AddBody(std::size_t component, const std::vector<ScenePlacement>& placements) {
        for (const ScenePlacement& placement : placements) {
            std::size_t node = component;
            if (placements.size() > 1) node = AddNode(component, "", nullptr);
            Transform nearOrigin = placement.toModel;
            for (std::size_t row = 0; row < 3; ++row) nearOrigin[row * 4 + 3] -= origin[row];
            const std::vector<NodeTransform> transforms = NodeTransformsOf(nearOrigin);
            AddTransform(node, transforms.front());
            if (transforms.size() > 1) {
                node = AddNode(node, "", nullptr);
                AddTransform(node, transforms.back());
            }
            gltf.nodes[node].mesh = static_cast<int>(placement.mesh);
        }
    }

    void AddTransform(std::size_t number, const NodeTransform& transform) {
        tinygltf::Node& node = gltf.nodes[number];
        const NodeTransform none;
        const auto set = [](std::vector<double>& values, const auto& given, const auto& usual) {
            if (given != usual) values.assign(given.begin(), given.end());
        };
        set(node.translation, transform.translation, none.translation);
        set(node.rotation, transform.rotation, none.rotation);
        set(node.scale, transform.scale, none.scale);
    }

    const ExportModel& model;
    tinygltf::Model& gltf;
    ProgressPace& pace;
    std::array<double, 3> origin = {};
};

void AddMeshes(const Scene& scene, tinygltf::Model& gltf) {
    BufferWriter buffer(gltf);
    if (!scene.surfaces.empty()) buffer.AddSurfaces(scene.surfaces);
    for (const Look& look : scene.looks) gltf.materials.push_back(MaterialOf(look));
    for (const SceneMesh& mesh : scene.meshes) {
        tinygltf::Mesh& added = gltf.meshes.emplace_back();
        added.name = ToUtf8(mesh.name);
        for (const ScenePart& part : mesh.parts) {
            tinygltf::Primitive& primitive = added.primitives.emplace_back();
            primitive.attributes["POSITION"] = buffer.PointsOf(part.surface);
            primitive.indices = buffer.IndicesOf(part.surface);
            primitive.material = static_cast<int>(part.look);
            primitive.mode = TINYGLTF_MODE_TRIANGLES;
        }
    }
}

}  // namespace

bool CanWriteGlb() {
    return true;
}

void EncodeGlb(const ExportModel& model, ZVSmartFormat::CZVFTOutStream& out, ProgressPace& pace) {
    tinygltf::Model gltf;
    gltf.asset.version = "2.0";
    gltf.asset.generator = "zvg " ZVG_VERSION;
    if (!model.source.empty()) gltf.asset.extras = ValueOf({{"source", model.source}});
    AddMeshes(model.scene, gltf);
    NodeWriter(model, gltf, pace).AddAll();
    gltf.scenes.emplace_back().nodes = {0};
    gltf.defaultScene = 0;
    StreamBuffer buffer(out);
    std::ostream stream(&buffer);
    tinygltf::TinyGLTF().WriteGltfSceneToStream(&gltf, stream, false, true);
    if (!stream) throw Error(Status::InputOutput, "not all could be written");
}

}  // namespace ZVSmartModel
