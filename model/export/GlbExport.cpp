#include "model/export/GlbExport.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <string_view>

#include "model/element/FileSink.h"
#include "model/element/Utf8.h"
#include "model/export/GlbBuffer.h"
#include "model/export/GlbNodes.h"

// A GLB file: "glTF", version 2, bytes of the file; then a chunk of JSON and one of binary data,
// each with its bytes, which are a multiple of 4, and its kind ahead.

namespace ZVSmartModel {

namespace {

constexpr int triangleMode = 4, lineMode = 1;

double Linear(std::uint8_t stored) {
    const double value = stored / 255.0;
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

Extras MaterialOf(const std::string& name, const Rgba& colour) {
    const Rgba& c = colour;
    Extras material = {
        {"name", name},
        {"doubleSided", true},
        {"pbrMetallicRoughness",
         {{"baseColorFactor", {Linear(c.red), Linear(c.green), Linear(c.blue), c.alpha / 255.0}},
          {"metallicFactor", 0.0},
          {"roughnessFactor", 0.9}}}};
    if (name.empty()) material.erase("name");
    if (c.alpha != 0xFF) material["alphaMode"] = "BLEND";
    return material;
}

/// The accessors of a surface.
struct SurfaceAccessors {
    int points = 0;
    std::optional<int> normals, edges;
    int triangles = 0;
};

/// Meshes and their surfaces.
class MeshWriter {
  public:
    MeshWriter(const Scene& scene, bool quantize, GlbBuffer& buffer)
        : scene(scene), quantize(quantize), buffer(buffer), accessors(scene.surfaces.size()) {
        FindScales();
        AddSurfaces();
    }

    /// What a mesh's coordinates are divided by.
    const std::vector<double>& ScaleOfMesh() const { return scaleOfMesh; }

    JsonElements Meshes() const {
        JsonElements meshes;
        for (const SceneMesh& mesh : scene.meshes) {
            Extras text = {{"name", ToUtf8(mesh.name)}};
            if (mesh.name.empty()) text.erase("name");
            for (const ScenePart& part : mesh.parts) AddPrimitives(part, text["primitives"]);
            meshes.Add(text);
        }
        return meshes;
    }

    JsonElements Materials() const {
        constexpr Rgba dark = {0x30, 0x30, 0x30, 0xFF};
        JsonElements materials;
        for (const Look& look : scene.looks) materials.Add(MaterialOf(look.name, look.colour));
        if (hasEdges) materials.Add(MaterialOf("edges", dark));
        return materials;
    }

  private:
    void AddPrimitives(const ScenePart& part, Extras& primitives) const {
        const SurfaceAccessors& of = accessors[part.surface];
        Extras attributes = {{"POSITION", of.points}};
        if (of.edges) {
            primitives.push_back({{"attributes", attributes},
                                  {"indices", *of.edges},
                                  {"material", scene.looks.size()},
                                  {"mode", lineMode}});
        }
        if (of.normals) attributes["NORMAL"] = *of.normals;
        primitives.push_back({{"attributes", attributes},
                              {"indices", of.triangles},
                              {"material", part.look},
                              {"mode", triangleMode}});
        // Surfaces first, as a reader may take the first for the whole.
        if (of.edges) std::swap(primitives.back(), primitives[primitives.size() - 2]);
    }

    /// Meshes that differ in looks alone have the same surfaces, so each surface has one scale.
    void FindScales() {
        scaleOfMesh.assign(scene.meshes.size(), 1);
        scaleOfSurface.assign(scene.surfaces.size(), 1);
        if (!quantize) return;
        for (std::size_t i = 0; i < scene.meshes.size(); ++i) {
            float most = 0;
            for (const ScenePart& part : scene.meshes[i].parts) {
                for (const auto& point : scene.surfaces[part.surface].points) {
                    for (const float value : point) most = std::max(most, std::fabs(value));
                }
            }
            if (most > 0) scaleOfMesh[i] = most;
            for (const ScenePart& part : scene.meshes[i].parts) {
                scaleOfSurface[part.surface] = scaleOfMesh[i];
            }
        }
    }

    void AddSurfaces() {
        const std::size_t count = scene.surfaces.size();
        buffer.BeginView(GlbUse::Vertices, quantize ? sizeof(ShortPoint) : 3 * sizeof(float));
        for (std::size_t i = 0; i < count; ++i) accessors[i].points = AddPoints(i);
        buffer.EndView();
        buffer.BeginView(GlbUse::Vertices, quantize ? sizeof(ByteNormal) : 3 * sizeof(float));
        for (std::size_t i = 0; i < count; ++i) {
            if (!scene.surfaces[i].normals.empty()) accessors[i].normals = AddNormals(i);
        }
        buffer.EndView();
        for (const bool isShort : {true, false}) {
            AddIndices(GlbUse::Triangles, isShort,
                       [this](std::size_t i, int accessor) { accessors[i].triangles = accessor; });
            AddIndices(GlbUse::Lines, isShort, [this](std::size_t i, int accessor) {
                accessors[i].edges = accessor;
                hasEdges = true;
            });
        }
    }

    // Elements of vertex data begin at multiples of 4 bytes.
    using ShortPoint = std::array<std::int16_t, 4>;
    using ByteNormal = std::array<std::int8_t, 4>;

    template <class Element>
    static Element Quantized(const std::array<float, 3>& vector, double scale) {
        constexpr double most = std::numeric_limits<typename Element::value_type>::max();
        Element element = {};
        for (std::size_t i = 0; i < 3; ++i) {
            const double value = std::round(static_cast<double>(vector[i]) / scale * most);
            element[i] = static_cast<typename Element::value_type>(value);
        }
        return element;
    }

    template <class Element>
    static Extras Bounds(const std::vector<Element>& points) {
        Element low = points.front(), high = low;
        for (const Element& point : points) {
            for (std::size_t axis = 0; axis < 3; ++axis) {
                low[axis] = std::min(low[axis], point[axis]);
                high[axis] = std::max(high[axis], point[axis]);
            }
        }
        return {{"min", {low[0], low[1], low[2]}}, {"max", {high[0], high[1], high[2]}}};
    }

    int AddPoints(std::size_t number) {
        const SceneSurface& surface = scene.surfaces[number];
        if (!quantize) {
            return buffer.Add("VEC3", GlbNumber::Float, surface.points, Bounds(surface.points));
        }
        std::vector<ShortPoint> points;
        points.reserve(surface.points.size());
        for (const auto& point : surface.points) {
            points.push_back(Quantized<ShortPoint>(point, scaleOfSurface[number]));
        }
        Extras more = Bounds(points);
        more["normalized"] = true;
        return buffer.Add("VEC3", GlbNumber::Short, points, more);
    }

    int AddNormals(std::size_t number) {
        const SceneSurface& surface = scene.surfaces[number];
        if (!quantize) return buffer.Add("VEC3", GlbNumber::Float, surface.normals);
        std::vector<ByteNormal> normals;
        normals.reserve(surface.normals.size());
        for (const auto& normal : surface.normals) {
            normals.push_back(Quantized<ByteNormal>(normal, 1));
        }
        return buffer.Add("VEC3", GlbNumber::Byte, normals, {{"normalized", true}});
    }

    /// The triangles or lines of all surfaces whose indices are short, or of the others.
    template <class Tell>
    void AddIndices(GlbUse use, bool isShort, Tell tell) {
        buffer.BeginView(use, isShort ? sizeof(std::uint16_t) : sizeof(std::uint32_t));
        for (std::size_t i = 0; i < scene.surfaces.size(); ++i) {
            const SceneSurface& surface = scene.surfaces[i];
            if ((surface.points.size() < 0xFFFF) != isShort) continue;
            std::vector<std::uint32_t> indices;
            const auto append = [&indices](const auto& corners) {
                indices.insert(indices.end(), corners.begin(), corners.end());
            };
            if (use == GlbUse::Lines) {
                std::for_each(surface.edges.begin(), surface.edges.end(), append);
            } else {
                std::for_each(surface.triangles.begin(), surface.triangles.end(), append);
            }
            if (indices.empty()) continue;
            if (isShort) {
                const std::vector<std::uint16_t> narrow(indices.begin(), indices.end());
                tell(i, buffer.Add("SCALAR", GlbNumber::UnsignedShort, narrow));
            } else {
                tell(i, buffer.Add("SCALAR", GlbNumber::UnsignedInt, indices));
            }
        }
        buffer.EndView();
    }

    const Scene& scene;
    bool quantize;
    GlbBuffer& buffer;
    std::vector<SurfaceAccessors> accessors;
    std::vector<double> scaleOfMesh, scaleOfSurface;
    bool hasEdges = false;
};

std::string Word(std::uint64_t value) {
    std::string bytes;
    for (unsigned int i = 0; i < 4; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFF);
    return bytes;
}

void WriteChunks(std::string& text, const GlbBuffer& buffer, ZVSmartFormat::CZVFTOutStream& out) {
    constexpr std::uint64_t headBytes = 12, chunkHeadBytes = 8, mostBytes = 0xFFFFFFFF;
    while (text.size() % 4 != 0) text += ' ';
    const std::vector<unsigned char>& binary = buffer.Bytes();
    std::uint64_t size = headBytes + chunkHeadBytes + text.size();
    if (!binary.empty()) size += chunkHeadBytes + binary.size();
    if (size > mostBytes) {
        throw Error(Status::InputOutput, "the model is too large for one GLB file");
    }
    WriteWhole(out, "glTF" + Word(2) + Word(size) + Word(text.size()) + "JSON");
    WriteWhole(out, text);
    if (binary.empty()) return;
    WriteWhole(out, Word(binary.size()) + std::string("BIN\0", 4));
    WriteWhole(out, {reinterpret_cast<const char*>(binary.data()), binary.size()});
}

}  // namespace

void EncodeGlb(const ExportModel& model, const ExportOptions& options,
               ZVSmartFormat::CZVFTOutStream& out, ProgressPace& pace) {
    GlbBuffer buffer(options.compress);
    const MeshWriter writer(model.scene, options.quantize, buffer);
    const GlbNodes nodes = NodesOf(model, writer.ScaleOfMesh(), options.instances, buffer, pace);

    Extras asset = {{"version", "2.0"}, {"generator", "zvg " ZVG_VERSION}};
    if (!model.source.empty()) asset["extras"] = {{"source", model.source}};
    std::string text = R"({"asset":)" + asset.dump() + R"(,"scene":0,"scenes":[{"nodes":[0]}])";
    Extras extensions = Extras::array();
    if (options.quantize && !model.scene.meshes.empty()) {
        extensions.push_back("KHR_mesh_quantization");
    }
    if (options.compress && !buffer.Bytes().empty()) {
        extensions.push_back("EXT_meshopt_compression");
    }
    if (nodes.hasInstances) extensions.push_back("EXT_mesh_gpu_instancing");
    if (!extensions.empty()) {
        text += R"(,"extensionsUsed":)" + extensions.dump() + R"(,"extensionsRequired":)" +
                extensions.dump();
    }
    const auto add = [&text](const char* name, const JsonElements& elements) {
        if (elements.Count() != 0) text += ",\"" + std::string(name) + "\":" + elements.Array();
    };
    add("nodes", nodes.nodes);
    add("meshes", writer.Meshes());
    add("materials", writer.Materials());
    add("accessors", buffer.Accessors());
    add("bufferViews", buffer.Views());
    add("buffers", buffer.Buffers());
    text += '}';
    WriteChunks(text, buffer, out);
}

}  // namespace ZVSmartModel
