// Packs models of mesh formats with the built tool and looks at what arrived.

#include <array>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Body.h"
#include "tool_support.h"

using namespace ZVSmartModel;
using nlohmann::json;

namespace {

/// Each property on a line: "SET.NAME = VALUE (KIND UNIT)".
std::string TextOf(std::vector<Property> properties) {
    std::vector<std::string> lines;
    for (const Property& each : properties) {
        lines.push_back(each.FullName() + " = " + each.value + " (" + each.kind +
                        (each.unit.empty() ? "" : ' ' + each.unit) + ")\n");
    }
    std::sort(lines.begin(), lines.end());  // which objects of JSON have no order of
    std::string text;
    for (const std::string& line : lines) text += line;
    return text;
}

std::string TextOf(const std::optional<Rgba>& colour) {
    if (!colour) return "none";
    std::ostringstream text;
    text << int{colour->red} << ' ' << int{colour->green} << ' ' << int{colour->blue} << ' '
         << int{colour->alpha};
    return text.str();
}

void ExpectBox(const Box& box, const Point& low, const Point& high, const std::string& of) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        EXPECT_NEAR(box.low[axis], low[axis], 1e-4) << of;
        EXPECT_NEAR(box.high[axis], high[axis], 1e-4) << of;
    }
}

class MeshModels : public ToolFixture {
  protected:
    static std::string Ours(const std::string& name) { return ZVG_TEST_MODELS_DIR "/" + name; }

    BlockFile Packed(const std::string& model, const std::string& options = "") {
        EXPECT_EQ(Run("$Z pack --force --no-preview " + options + ' ' + model + " -o m.zvg"), 0)
            << err;
        return BlockFile(folder + "m.zvg");
    }
    int PackText(const std::string& name, const std::string& text) {
        std::ofstream(folder + name, std::ios::binary) << text;
        return Run("$Z pack --force --no-preview " + name + " -o m.zvg");
    }
};

/// All elements with their bodies, by GUID.
struct Arrived {
    Element element;
    Measures measures;
    std::vector<Rgba> looks;
};
std::map<std::string, Arrived> AllOf(const BlockFile& file) {
    std::map<std::string, Arrived> all;
    file.ForEach({}, [&](const Element& element) {
        const Body body = ReadBody(file, element.index);
        Arrived& arrived = all[element.guid] = {element, Measure(body), {}};
        for (const Triangles& surface : body.surfaces) {
            arrived.looks.push_back(surface.look->colour);
        }
        return true;
    });
    return all;
}

TEST_F(MeshModels, GltfArrivesWithWhatItHolds) {
    const BlockFile file = Packed(Ours("instances.gltf"), "--report r.json");
    auto all = AllOf(file);
    ASSERT_EQ(all.size(), 4U);
    EXPECT_EQ(all["house"].element.className, "Node");
    EXPECT_EQ(file.PartsOf("house").size(), 3U);
    const Element& left = all["left"].element;
    EXPECT_EQ(left.className + ' ' + left.typeName + ' ' + left.name, "Mesh wedge left");
    EXPECT_EQ(TextOf(left.properties),
              "Element.Name = left (text)\n"
              "Node.count = 2 (integer)\n"
              "Node.mark = A (text)\n"
              "Node.none =  (empty)\n"
              "Node.outside = true (boolean)\n"
              "Node.sizes = 1, 2.5 (list:real)\n"
              "Node.width = 0.25 (real)\n"
              "Pset_Wall.FireRating = F90 (text)\n"
              "Pset_Wall.Layers.0.Name = brick (text)\n"
              "Pset_Wall.Layers.1.Name = plaster (text)\n"
              "Pset_Wall.Length = 8.5 (length ft)\n");
    ASSERT_EQ(left.materials.size(), 1U);
    EXPECT_EQ(left.materials[0].name, "chequered");
    EXPECT_EQ(TextOf(left.materials[0].properties), "Material.Lambda = 0.6 (real)\n");
    // Half the light of white, times the factor's; what does not blend is opaque.
    EXPECT_EQ(TextOf(left.colour), "188 137 0 128");
    EXPECT_EQ(TextOf(all["left#2"].element.colour), "0 188 255 255");

    // Y up becomes Z up, and the mirrored one is not turned inside out.
    ExpectBox(all["left"].measures.box, {5, -16.5, 10}, {5.5, -15, 11}, "left");
    ExpectBox(all["right"].measures.box, {-0.5, -1.5, 0}, {0, 0, 1}, "right");
    EXPECT_NEAR(all["left"].measures.volume, 0.125, 1e-6);
    EXPECT_NEAR(all["right"].measures.volume, 0.125, 1e-6);
    const Shapes shapes = ReadShapes(file);
    EXPECT_EQ(shapes.shapes.size(), 2U) << "wedges of two looks";
    EXPECT_EQ(shapes.placements.size(), 3U);

    const json report = json::parse(ReadAll(folder + "r.json"));
    std::map<std::string, int> counts;
    for (const json& each : report["findings"]) counts[each["kind"]] += each["count"].get<int>();
    EXPECT_EQ(counts, (std::map<std::string, int>{{"animation", 1}, {"point", 4}, {"texture", 1}}));
    EXPECT_EQ(report["types"][0],
              (json{{"type", "Mesh"}, {"inModel", 3}, {"arrived", 3}, {"withBody", 3}}));
}

TEST_F(MeshModels, ColladaArrivesInMetresWithZUp) {
    auto all = AllOf(Packed(Ours("inches.dae")));
    ASSERT_EQ(all.size(), 2U);
    const Arrived& roof = all["roof"];
    EXPECT_EQ(roof.element.parents, std::vector<std::string>{"storey"});
    EXPECT_EQ(roof.element.materialName, "brick");
    EXPECT_EQ(TextOf(roof.element.colour), "255 51 0 255");
    ExpectBox(roof.measures.box, {0.254, 0.508, 0.762}, {2.794, 3.048, 2.032}, "roof");
}

TEST_F(MeshModels, ObjTakesTextureAndOpacityFromItsFolder) {
    // Pictures of one grey each, 128 and 64 as stored.
    const std::string png =
        "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAAAAAA6fptVAAAACklEQVR4nGNoAAAAggCBd8"
        "1ytgAAAABJRU5ErkJggg==";
    const std::string jpeg =
        "/9j/"
        "2wBDAAIBAQEBAQIBAQECAgICAgQDAgICAgUEBAMEBgUGBgYFBgYGBwkIBgcJBwYGCAsICQoKCgoKBggLDAsKDAkK"
        "Cgr/wAALCAAIAAgBAREA/8QAFAABAAAAAAAAAAAAAAAAAAAACf/EABQQAQAAAAAAAAAAAAAAAAAAAAD/"
        "2gAIAQEAAD8A"
        "P9//2Q==";
    ASSERT_EQ(Run("mkdir t; echo " + png + " | base64 -d >t/grey.png; echo " + jpeg +
                  " | base64 -d | tee t/whole.jpg | head -c 120 >t/cut.jpg"),
              0);
    std::ofstream(folder + "m.mtl") << "newmtl A\nKd 1 0.5 0\nd 0.25\nmap_Kd t\\grey.png\n"
                                       "newmtl B\nKd 1 1 0\nmap_Kd t/whole.jpg\n"
                                       "newmtl C\nKd 0 0 1\nmap_Kd t/cut.jpg\n"
                                       "newmtl D\nKd 0 1 1\nmap_Kd ../grey.png\n";
    std::string obj = "mtllib m.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\n";
    for (const std::string name : {"A", "B", "C", "D"}) {
        obj += "o " + name + "\nusemtl " + name + "\nf 1 2 3\n";
    }
    std::ofstream(folder + "m.obj") << obj;
    std::string colours;
    for (const auto& [name, arrived] : AllOf(Packed("m.obj"))) {
        colours += name + ": " + TextOf(arrived.element.colour) + '\n';
    }
    EXPECT_EQ(colours, "A: 128 64 0 64\nB: 64 64 0 255\nC: 0 0 255 255\nD: 0 255 255 255\n");
    EXPECT_NE(err.find("textures are not there or cannot be read (2 times)"), std::string::npos)
        << err;
}

TEST_F(MeshModels, WhatWasExportedComesBack) {
    const auto before = AllOf(Packed(ZVG_EXAMPLES_DIR "/house.ifc"));
    ASSERT_EQ(Run("$Z export m.zvg -o m.glb"), 0) << err;
    ASSERT_EQ(Run("$Z export m.zvg -o bare.glb --no-properties --normals smooth"), 0) << err;
    const std::vector<Floor> floors = BlockFile(folder + "m.zvg").Floors();
    const auto bare = AllOf(Packed("bare.glb"));
    ASSERT_EQ(bare.size(), before.size());
    for (const auto& [guid, is] : bare) {
        EXPECT_EQ(is.element.className, before.at(guid).element.className);
        EXPECT_EQ(is.element.floorName, before.at(guid).element.floorName);
        EXPECT_EQ(is.looks, before.at(guid).looks);
        EXPECT_NEAR(is.measures.area, before.at(guid).measures.area, 1e-3);
    }
    const BlockFile file = Packed("m.glb");
    const auto after = AllOf(file);
    ASSERT_EQ(after.size(), before.size());
    for (const auto& [guid, was] : before) {
        ASSERT_EQ(after.count(guid), 1U) << guid;
        const Arrived& is = after.at(guid);
        const auto said = [](const Element& e) {
            std::vector<std::string> texts = {e.name,           e.floorName,         e.className,
                                              e.predefinedType, e.typeName,          e.group,
                                              e.materialName,   e.buildingName,      e.siteName,
                                              TextOf(e.colour), TextOf(e.properties)};
            for (const std::string& parent : e.parents) texts.push_back(parent);
            for (const Material& material : e.materials) texts.push_back(material.name);
            return texts;
        };
        EXPECT_EQ(said(is.element), said(was.element));
        EXPECT_EQ(is.looks, was.looks) << guid;
        EXPECT_EQ(is.measures.box.IsEmpty(), was.measures.box.IsEmpty());
        if (!was.measures.box.IsEmpty()) {
            ExpectBox(is.measures.box, was.measures.box.low, was.measures.box.high, guid);
        }
    }
    ASSERT_EQ(file.Floors().size(), floors.size());
    for (std::size_t i = 0; i < floors.size(); ++i) {
        const Floor floor = file.Floors()[i];
        EXPECT_EQ(floor.name, floors[i].name);
        EXPECT_EQ(floor.order, floors[i].order);
        EXPECT_EQ(floor.elevation, floors[i].elevation);
        EXPECT_EQ(floor.height, floors[i].height);
    }
}

TEST_F(MeshModels, HostileGltfEndsWithAWord) {
    const std::string good = ReadAll(Ours("triangle.gltf"));
    const struct {
        std::string from, to, says;
    } cases[] = {
        {R"("mesh": 0})", R"("mesh": 0, "children": [0]})", "a root of its scene is below"},
        {R"("mesh": 0})", R"("mesh": 0, "children": [1]})", "its nodes are no tree"},
        {R"("mesh": 0})", R"("mesh": 0, "children": [9]})", "a child that is not there"},
        {R"("mesh": 0})", R"("mesh": 9})", "a mesh that is not there"},
        {R"("scene": 0)", R"("scene": 0, "x": )" + std::string(99999, '['), "nests too deep"},
        {R"("scene": 0)", R"("scene": 0, "extensionsRequired": ["EXT_x"])", "extension EXT_x"},
        {R"("count": 3)", R"("count": 3000000000)", "out of range"},
        {"5126", "5122", "its points are no triples"},
        {R"([1, 2, 3])", R"([1, 2])", "a node's translation"},
        {R"([1, 2, 3])", R"([1, 2, 1e300])", "nothing in it can be packed"},
        {"AACAPwAA", "AADAfwAA", "nothing in it can be packed"},  // a point's NaN
        {R"("name": "a")", R"("name": 5)", "of the wrong kind"},
    };
    for (const auto& [from, to, says] : cases) {
        std::string text = good;
        text.replace(text.find(from), from.size(), to);
        const bool isSound = says == "extension EXT_x" || says == "its points are no triples" ||
                             says == "nothing in it can be packed";
        EXPECT_EQ(PackText("m.gltf", text), isSound ? 3 : 4) << to.substr(0, 99);
        EXPECT_NE(err.find(says), std::string::npos) << err;
    }
    std::string nodes = R"({"name": "n", "mesh": 0})";
    for (int i = 1; i < 600; ++i) nodes += R"(,{"children":[)" + std::to_string(i - 1) + "]}";
    const std::size_t at = good.find(R"("nodes": [{)") + 10;
    std::string deep = good;
    deep.replace(at, good.find("],\n  \"materials") - at, nodes);
    deep.replace(deep.find(R"("nodes": [0])"), 12, R"("nodes": [599])");
    EXPECT_EQ(PackText("m.gltf", deep), 4);
    EXPECT_NE(err.find("its nodes nest too deep"), std::string::npos) << err;
}

}  // namespace
