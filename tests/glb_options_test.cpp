// What the options of `zvg export` make of one small model, read back number by number.

#ifdef ZVG_HAVE_MESHOPTIMIZER
#include <meshoptimizer.h>
#endif

#include <array>
#include <cmath>
#include <map>
#include <set>

#include "glb_scene.h"

using namespace ZVSmartZvg;
using glb::Path, glb::Point, glb::ToWorld, glb::Visit;
using nlohmann::json;

namespace {

/// A cube of two metres around the origin, its faces outward.
CZVIMShell Cube() {
    CZVIMShell shell;
    for (int i = 0; i < 8; ++i) {
        shell.AddPt(
            {(i & 1) != 0 ? 1.0 : -1.0, (i & 2) != 0 ? 1.0 : -1.0, (i & 4) != 0 ? 1.0 : -1.0});
    }
    for (const std::vector<int>& face : {std::vector{0, 2, 3, 1},
                                         {4, 5, 7, 6},
                                         {0, 1, 5, 4},
                                         {2, 6, 7, 3},
                                         {0, 4, 6, 2},
                                         {1, 3, 7, 5}}) {
        shell.AddFaceIndex(face);
    }
    return shell;
}

CZVIMTransf Moved(double x, double y, double mirror = 1) {
    CZVIMTransf transf;
    transf.SetAt(0, 0, mirror);
    transf.SetAt(0, 3, x);
    transf.SetAt(1, 3, y);
    return transf;
}

SZVLGZvgComp Window(const std::wstring& name, const CZVIMTransf& transf) {
    SZVLGZvgComp comp;
    comp.classLevel1Name = L"Ground";
    comp.classLevel2Name = L"IfcWindow";
    comp.compGuidName = SerialKey(name);
    comp.compProperties = {{L"Pset.Width", L"1"}, {L"Pset.Glass", std::wstring(400, L'g')}};
    comp.geoRefs.resize(1);
    comp.geoRefs[0].geoIdentification = name;
    comp.geoRefs[0].geo.namedTransfs = {{L"cube", transf}};
    return comp;
}

/// Forty windows in a row, and one that is mirrored.
void Fill(CZVLGBlockSaver& saver) {
    SZVLGZvgGeo cube;
    cube.shells.push_back(Cube());
    saver.AddIdentificationGeo(L"cube", cube);
    for (int i = 0; i < 40; ++i) {
        saver.AddComp(Window(L"window " + std::to_wstring(i), Moved(5 * i, 1)));
    }
    saver.AddComp(Window(L"mirrored", Moved(-5, 1, -1)));
}

/// What a viewer shows.
struct Shown {
    std::size_t triangles = 0, meshNodes = 0;
    Point low = {1e9, 1e9, 1e9}, high = {-1e9, -1e9, -1e9};
};

class GlbOptions : public ToolFixture {
  protected:
    void SetUp() override {
        ToolFixture::SetUp();
        WriteBlock(folder + "model.zvg", Fill);
    }

    glb::File Exported(const std::string& options) {
        EXPECT_EQ(Run("$Z export model.zvg -o model.glb --force " + options), 0) << err;
        glb::File file(ReadAll(folder + "model.glb"));
        Decompress(file);
        return file;
    }

    static void Decompress([[maybe_unused]] glb::File& file) {
#ifdef ZVG_HAVE_MESHOPTIMIZER
        for (std::size_t i = 0; i < file.views.size(); ++i) {
            const json& view = file.text["bufferViews"][i];
            if (!view.contains("extensions")) continue;
            const json& packed = view["extensions"]["EXT_meshopt_compression"];
            const std::size_t count = packed["count"], stride = packed["byteStride"];
            using Decode =
                int (*)(void*, std::size_t, std::size_t, const unsigned char*, std::size_t);
            Decode decode = &meshopt_decodeVertexBuffer;
            if (packed["mode"] == "TRIANGLES") decode = &meshopt_decodeIndexBuffer;
            if (packed["mode"] == "INDICES") decode = &meshopt_decodeIndexSequence;
            std::string bytes(count * stride, '\0');
            const auto* const from = reinterpret_cast<const unsigned char*>(file.views[i].data());
            EXPECT_EQ(decode(bytes.data(), count, stride, from, file.views[i].size()), 0) << i;
            EXPECT_EQ(bytes.size(), view["byteLength"]) << i;
            file.views[i] = bytes;
        }
#endif
    }

    static Shown ShownOf(const glb::File& file) {
        Shown shown;
        Visit(file.text, {0}, [&](const json& node, const Path& path) {
            if (!node.contains("mesh")) return;
            ++shown.meshNodes;
            for (const Point& place : PlacesOf(file, node)) {
                AddMesh(file, file.text["meshes"][node["mesh"].get<std::size_t>()], path, place,
                        shown);
            }
        });
        return shown;
    }

    /// How far a node's instances are moved; they are neither turned nor scaled here.
    static std::vector<Point> PlacesOf(const glb::File& file, const json& node) {
        if (!node.contains("extensions")) return {{0, 0, 0}};
        const json& attributes = node["extensions"]["EXT_mesh_gpu_instancing"]["attributes"];
        std::vector<Point> places;
        for (const auto& move : file.Elements(attributes["TRANSLATION"])) {
            places.push_back({move[0], move[1], move[2]});
        }
        EXPECT_EQ(places.size(), node["extras"]["instances"].size());
        return places;
    }

    static void AddMesh(const glb::File& file, const json& mesh, const Path& path,
                        const Point& place, Shown& shown) {
        for (const json& primitive : mesh["primitives"]) {
            if (primitive["mode"] != 4) continue;
            const auto points = file.Elements(primitive["attributes"]["POSITION"]);
            const auto indices = file.Elements(primitive["indices"]);
            shown.triangles += indices.size() / 3;
            for (const auto& index : indices) {
                const auto& p = points.at(static_cast<std::size_t>(index[0]));
                const Point at =
                    ToWorld(file.text, path, {p[0] + place[0], p[1] + place[1], p[2] + place[2]});
                for (std::size_t axis = 0; axis < 3; ++axis) {
                    shown.low[axis] = std::min(shown.low[axis], at[axis]);
                    shown.high[axis] = std::max(shown.high[axis], at[axis]);
                }
            }
        }
    }
};

TEST_F(GlbOptions, ShowTheSameInFewerNodesAndBytes) {
    const std::string plain = [this] {
        Exported("");
        return ReadAll(folder + "model.glb");
    }();
    const struct {
        const char* options;
        std::size_t meshNodes;
        std::set<std::string> extensions;
        double mostOfPlain;  ///< bytes
    } cases[] = {
        {"", 41, {}, 1},
        {"--no-properties", 41, {}, 0.5},
        {"--merge", 1, {}, 0.3},
        {"--no-properties --instances", 2, {"EXT_mesh_gpu_instancing"}, 0.3},
        {"--merge --quantize", 1, {"KHR_mesh_quantization"}, 0.27},
        {"--quantize --normals flat", 41, {"KHR_mesh_quantization"}, 1.1},
        {"--merge --compress --quantize",
         1,
         {"KHR_mesh_quantization", "EXT_meshopt_compression"},
         0.14},
        {"--merge --compress --edges --normals smooth", 1, {"EXT_meshopt_compression"}, 0.33},
        {"--compress --instances --no-properties",
         2,
         {"EXT_mesh_gpu_instancing", "EXT_meshopt_compression"},
         0.3}};
    for (const auto& [options, meshNodes, extensions, mostOfPlain] : cases) {
#ifndef ZVG_HAVE_MESHOPTIMIZER
        if (std::string(options).find("--compress") != std::string::npos) continue;
#endif
        const glb::File file = Exported(options);
        const Shown shown = ShownOf(file);
        EXPECT_EQ(shown.triangles, 41U * 12) << options;
        EXPECT_EQ(shown.meshNodes, meshNodes) << options;
        // A 32,767th of half of 202 metres, where all is one mesh.
        const double tolerance = extensions.count("KHR_mesh_quantization") != 0 ? 0.0031 : 1e-5;
        const Point low = {-6, -1, -2}, high = {196, 1, 0};  // Y is up
        for (std::size_t axis = 0; axis < 3; ++axis) {
            EXPECT_NEAR(shown.low[axis], low[axis], tolerance) << options << ' ' << axis;
            EXPECT_NEAR(shown.high[axis], high[axis], tolerance) << options << ' ' << axis;
        }
        for (const char* list : {"extensionsUsed", "extensionsRequired"}) {
            EXPECT_EQ(file.text.value(list, std::set<std::string>()), extensions) << options;
        }
        const double share = static_cast<double>(ReadAll(folder + "model.glb").size()) /
                             static_cast<double>(plain.size());
        EXPECT_LE(share, mostOfPlain) << options;
    }
}

TEST_F(GlbOptions, NormalsFollowTheCreaseAngleAndEdgesTheCreases) {
    const auto pointsOf = [](const glb::File& file) {
        const json& mesh = file.text["meshes"][0];
        std::set<std::vector<double>> normals;
        for (const json& primitive : mesh["primitives"]) {
            if (!primitive["attributes"].contains("NORMAL")) continue;
            for (std::vector<double> normal : file.Elements(primitive["attributes"]["NORMAL"])) {
                for (double& part : normal) part = std::round(part * 100);
                normals.insert(normal);
            }
        }
        const std::size_t points = mesh["primitives"][0]["attributes"]["POSITION"];
        return std::make_pair(file.text["accessors"][points]["count"].get<int>(), normals);
    };
    EXPECT_EQ(pointsOf(Exported("")), std::make_pair(8, std::set<std::vector<double>>()));
    for (const char* options : {"--normals flat", "--normals smooth", "--normals smooth=89.9"}) {
        const auto [points, normals] = pointsOf(Exported(options));
        EXPECT_EQ(points, 24) << options;
        EXPECT_EQ(normals.size(), 6U) << options;
        EXPECT_EQ(normals.count({0, 0, 100}), 1U) << options;
    }
    const auto [points, normals] = pointsOf(Exported("--normals smooth=91 --quantize"));
    EXPECT_EQ(points, 8);
    EXPECT_EQ(normals.count({57, 57, 57}), 1U);  // 1/√3, in 8 bits 73/127

    for (const auto& [options, lines] : {std::pair{"--edges", 12},
                                         {"--edges --normals flat", 12},
                                         {"--edges --normals smooth=91", 0}}) {
        const glb::File file = Exported(options);
        const json& primitives = file.text["meshes"][0]["primitives"];
        ASSERT_EQ(primitives.size(), lines == 0 ? 1U : 2U) << options;
        if (lines == 0) continue;
        EXPECT_EQ(primitives[1]["mode"], 1);
        const auto corners = file.Elements(primitives[1]["indices"]);
        const auto all = file.Elements(primitives[1]["attributes"]["POSITION"]);
        EXPECT_EQ(corners.size(), 2U * static_cast<std::size_t>(lines)) << options;
        for (std::size_t i = 0; i + 1 < corners.size(); i += 2) {
            double length = 0;  // no diagonal of a face
            for (std::size_t axis = 0; axis < 3; ++axis) {
                length += std::fabs(all.at(static_cast<std::size_t>(corners[i][0]))[axis] -
                                    all.at(static_cast<std::size_t>(corners[i + 1][0]))[axis]);
            }
            EXPECT_NEAR(length, 2, 1e-6) << options;
        }
    }
}

TEST_F(GlbOptions, PropertiesStandBesideByGlobalId) {
    WriteBlock(folder + "model.zvg", [](CZVLGBlockSaver& saver) {
        Fill(saver);
        SZVLGZvgComp again = Window(L"mirrored", Moved(0, 9));
        again.classLevel1Name = L"Upper";
        saver.AddComp(again);
    });
    const glb::File file = Exported("--no-properties --properties beside.json");
    const json beside = json::parse(ReadAll(folder + "beside.json"));
    EXPECT_EQ(beside["schema"], 1);
    EXPECT_EQ(beside["elements"].size(), 42U);
    EXPECT_EQ(beside.at("elements").at("mirrored (2)").at("component"), "1:0");
    int nodes = 0;
    for (const json& node : file.text["nodes"]) {
        if (!node.contains("extras") || !node["extras"].contains("component")) continue;
        EXPECT_EQ(node["extras"].size(), 3U) << node;
        const std::string guid = node["extras"].at("globalId");
        const json& element = beside.at("elements").at(guid);
        EXPECT_EQ(element.at("properties").at("Pset.Width"), "1");
        EXPECT_EQ(element.at("classification").at("level2"), "IfcWindow");
        EXPECT_EQ(element.at("name"), node["name"]);
        ++nodes;
    }
    EXPECT_EQ(nodes, 42);

    const struct {
        const char* options;
        int status;
    } refused[] = {{"-o new.glb --properties beside.json", 3},
                   {"-o new.glb --properties -", 2},
                   {"-o new.glb --properties model.zvg --force", 3},
                   {"-o new.glb --normals smooth=200", 2},
                   {"-o new.glb --normals round", 2},
                   {"-o new.glb --edges --instances", 2},
                   {"-o new.obj --edges", 2},
                   {"-o new.obj --compress", 2}};
    for (const auto& [options, status] : refused) {
        EXPECT_EQ(Run(std::string("$Z export model.zvg ") + options), status) << options << err;
    }
    EXPECT_FALSE(std::filesystem::exists(folder + "new.glb"));
    EXPECT_EQ(Run("$Z export model.zvg -o new.obj --merge --properties new.json"), 0) << err;
    const std::string obj = ReadAll(folder + "new.obj");
    std::map<char, int> lines;
    for (std::size_t at = 0; (at = obj.find('\n', at)) + 2 < obj.size(); ++at) {
        if (obj[at + 2] == ' ') ++lines[obj[at + 1]];
    }
    EXPECT_EQ(lines['o'], 2) << "a floor each";
    EXPECT_EQ(lines['f'], 42 * 12);
    EXPECT_EQ(json::parse(ReadAll(folder + "new.json")), beside);
    EXPECT_EQ(Run("$Z export model.zvg -o - --properties new.json --force"), 0) << err;
    EXPECT_EQ(out.substr(0, 4), "glTF");
}

}  // namespace
