// Runs the built tool's export and preview commands on small files that the tests write.

#include <array>
#include <sstream>
#include <vector>

#include "glb_scene.h"
#include "tool_support.h"

using namespace ZVSmartZvg;
using nlohmann::json;
namespace fs = std::filesystem;

namespace {

using glb::Point, glb::ToWorld, glb::Visit;

/// An L-shaped plate, one face of six corners of which the fourth is reentrant.
CZVIMShell Plate() {
    CZVIMShell shell;
    shell.AddPts({{0, 0, 1}, {4, 0, 1}, {4, 1, 1}, {1, 1, 1}, {1, 3, 1}, {0, 3, 1}});
    shell.AddFaceIndex({0, 1, 2, 3, 4, 5});
    return shell;
}

SZVLGZvgComp Comp(const wchar_t* floor, const wchar_t* className, const std::wstring& name) {
    SZVLGZvgComp comp;
    comp.classLevel1Name = floor;
    comp.classLevel2Name = className;
    comp.compGuidName = SerialKey(name);
    comp.geoRefs.resize(1);
    comp.geoRefs[0].geoIdentification = name;
    return comp;
}

CZVIMTransf Transf(const std::array<double, 12>& rows) {
    CZVIMTransf transf;
    for (int i = 0; i < 12; ++i) transf.SetAt(i / 4, i % 4, rows[static_cast<std::size_t>(i)]);
    return transf;
}

const std::array<double, 12> mirrored = {-1, 0, 0, 7, 0, 1, 0, 8, 0, 0, 1, 9};
const std::array<double, 12> sheared = {1, 0.5, 0, 1, 0, 2, 0.25, 2, 0, 0, 3, 3};
const std::array<double, 12> flattened = {0, -1, 0, 5, 1, 0, 0, 6, 0, 0, 0, 4};

/// The plate, blue glass in a record of its own; "walls" place it, "slab" has a shell itself.
void Fill(CZVLGBlockSaver& saver) {
    SZVLGZvgGeo plate;
    plate.subGeos.resize(1);
    plate.subGeos[0].attr.flags = 0x90;
    plate.subGeos[0].attr.blue = 0xFF;
    plate.subGeos[0].attr.alpha = 0x80;
    plate.subGeos[0].attr.styleName = L"Glass";
    plate.subGeos[0].geo.shells.push_back(Plate());
    saver.AddIdentificationGeo(L"plate", plate);
    SZVLGZvgComp wall = Comp(L"Ground", L"IfcWall", L"wall 1");
    wall.compProperties = {{L"a", L"1"}, {L"a", L"2"}, {L"quote\"\\\n", L"\xD800 \x1"}};
    wall.geoRefs[0].geo.namedTransfs = {
        {L"plate", Transf(mirrored)}, {L"plate", Transf(sheared)}, {L"nowhere", CZVIMTransf()}};
    saver.AddComp(wall);
    wall = Comp(L"Ground", L"IfcWall", L"wall 2");
    // Leads back to itself through "loop".
    wall.geoRefs[0].geo.namedTransfs = {{L"plate", Transf(flattened)}, {L"loop", CZVIMTransf()}};
    saver.AddComp(wall);
    SZVLGZvgGeo loop;
    loop.namedTransfs = {{L"wall 2", CZVIMTransf()}, {L"loop", CZVIMTransf()}};
    saver.AddIdentificationGeo(L"loop", loop);
    SZVLGZvgComp slab = Comp(L"Upper", L"IfcSlab", L"slab");
    slab.geoRefs[0].geo.shells.push_back(Plate());
    CZVIMShell hostile;
    hostile.AddPts({{0, 0, 0}, {1, 0, 0}, {NAN, 1, 0}});
    hostile.AddFaceIndex({0, 1, 2});
    hostile.AddFaceIndex({0, 1, 2000000000, -1});
    slab.geoRefs[0].geo.shells.push_back(hostile);
    saver.AddComp(slab);
}

class ExportTest : public ToolFixture {
  protected:
    void SetUp() override {
        ToolFixture::SetUp();
        WriteBlock(folder + "model.zvg", Fill);
    }

    bool There(const std::string& name) const { return fs::exists(folder + name); }
    json Glb(const std::string& options = "") {
        EXPECT_EQ(Run("$Z export model.zvg -o model.glb --force " + options), 0) << err;
        const json gltf = JsonOfGlb(ReadAll(folder + "model.glb"));
        EXPECT_FALSE(gltf.is_discarded());
        return gltf;
    }
    /// The stored preview's pixels, by way of the PNG and back.
    std::vector<u8> PixelsOf(const std::string& png) {
        std::ofstream(folder + "t.obj") << "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
        EXPECT_EQ(Run("$Z pack t.obj -o packed.zvg --force --preview " + png), 0) << err;
        ZVSmartFormat::CZVFTFileInStream stream(folder + "packed.zvg");
        CZVLGBlockReader reader;
        SZVLGZvgGeoImage image;
        EXPECT_TRUE(stream.Open() && reader.Init(&stream) && reader.GetPreviewImage(image));
        return {image.pixels, image.pixels + image.PixelBytes()};
    }
};

TEST_F(ExportTest, GlbSharesMeshesAndPlacesThemWhereTheyAre) {
    const json gltf = Glb();
    ASSERT_EQ(gltf["meshes"].size(), 2U);  // plate and slab, whatever places them
    EXPECT_NE(err.find("1 geometries are referred to but not in the file"), std::string::npos);
    EXPECT_EQ(gltf["accessors"][0]["count"], 6);
    std::vector<Point> corners;
    Visit(gltf, {0}, [&](const json& node, const std::vector<std::size_t>& path) {
        if (node.value("mesh", -1) != 0) return;
        // The plate's corner (4, 1, 1), relative to its middle (2, 1.5, 1).
        corners.push_back(ToWorld(gltf, path, {2, -0.5, 0}));
    });
    std::vector<Point> expected;
    for (const auto& m : {mirrored, sheared, flattened}) {
        const auto row = [&m](std::size_t i) { return m[i] * 4 + m[i + 1] + m[i + 2] + m[i + 3]; };
        expected.push_back({row(0), row(8), -row(4)});  // Y is up
    }
    ASSERT_EQ(corners.size(), expected.size());
    for (std::size_t i = 0; i < corners.size(); ++i) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            EXPECT_NEAR(corners[i][axis], expected[i][axis], 1e-9) << i << ' ' << axis;
        }
    }
}

TEST_F(ExportTest, GlbKeepsTreeNamesColoursAndProperties) {
    const json gltf = Glb();
    const json& material =
        gltf["materials"][gltf["meshes"][0]["primitives"][0]["material"].get<std::size_t>()];
    EXPECT_EQ(material["name"], "Glass");
    EXPECT_EQ(material["alphaMode"], "BLEND");
    EXPECT_EQ(material["pbrMetallicRoughness"]["baseColorFactor"],
              json({0.0, 0.0, 1.0, 128 / 255.0}));
    std::vector<std::string> paths;
    json wall;
    Visit(gltf, {0}, [&](const json& node, const std::vector<std::size_t>& path) {
        if (!node.contains("extras") || !node["extras"].contains("globalId")) return;
        if (node["extras"]["globalId"] == "wall 1") wall = node["extras"];
        std::string text;
        for (const std::size_t n : path) text += gltf["nodes"][n].value("name", "") + '/';
        paths.push_back(text);
    });
    EXPECT_EQ(paths, (std::vector<std::string>{"model/Ground/IfcWall/IfcWall wall 1/",
                                               "model/Ground/IfcWall/IfcWall wall 2/",
                                               "model/Upper/IfcSlab/IfcSlab slab/"}));
    EXPECT_EQ(wall["classification"]["level2"], "IfcWall");
    EXPECT_EQ(wall["properties"],
              json({{"a", "1"}, {"a (2)", "2"}, {"quote\"\\\n", "\xEF\xBF\xBD \x01"}}));
}

TEST_F(ExportTest, SelectsAndRefuses) {
    const auto componentsOf = [this](const std::string& options) {
        const json gltf = Glb(options);
        int count = 0;
        for (const json& node : gltf["nodes"]) {
            count += node.contains("extras") && node["extras"].contains("component");
        }
        return count;
    };
    EXPECT_EQ(componentsOf("--floor Upper"), 1);
    EXPECT_EQ(componentsOf("--floor 0"), 2);
    EXPECT_EQ(componentsOf("--class IfcSlab"), 1);
    const struct {
        const char* arguments;
        int status;
    } refused[] = {{"export model.zvg -o x.glb --floor Cellar", 5},
                   {"export model.zvg -o x.glb --class IfcDoor", 5},
                   {"export model.zvg -o x.glb --class IfcSlab --floor Ground", 5},
                   {"export model.zvg -o x.gltf", 2},
                   {"export model.zvg -o model.glb", 3},
                   {"export missing.zvg -o x.glb", 3},
                   {"export stderr -o x.glb", 4},
                   {"export model.zvg -o taken.obj", 3},
                   {"preview model.zvg -o x.png", 5},
                   {"preview model.zvg -o x.png --render 64", 2},
                   {"preview model.zvg -o x.png --render 0x48", 2},
                   {"preview model.zvg -o x.png --render 64x9000", 2},
                   {"preview model.zvg -o x.jpg --render 64x48", 2},
                   {"preview model.zvg -o taken --render 64x48", 3}};
    std::ofstream(folder + "taken.mtl") << "mine";
    std::ofstream(folder + "taken") << "mine";
    const std::string before = ReadAll(folder + "model.glb");
    for (const auto& [arguments, status] : refused) {
        EXPECT_EQ(Run(std::string("$Z ") + arguments), status) << arguments << '\n' << err;
    }
    EXPECT_EQ(ReadAll(folder + "model.glb"), before);
    EXPECT_EQ(ReadAll(folder + "taken.mtl"), "mine");
    EXPECT_EQ(ReadAll(folder + "taken"), "mine");
    std::size_t files = 0;
    for (const auto& entry : fs::directory_iterator(folder)) {
        files += entry.path().filename() != "stdout" && entry.path().filename() != "stderr";
    }
    EXPECT_EQ(files, 4U) << "model.zvg, model.glb, taken.mtl and taken";
}

TEST_F(ExportTest, ObjCutsFacesCountsOnAndTurnsMirroredOnes) {
    ASSERT_EQ(Run("$Z export model.zvg -o model.obj"), 0) << err;
    EXPECT_TRUE(There("model.mtl"));
    std::istringstream lines(ReadAll(folder + "model.obj"));
    std::vector<Point> points;
    std::vector<double> upward;  // twice the area as seen from above, per face
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string kind;
        words >> kind;
        if (kind == "v") {
            Point& p = points.emplace_back();
            words >> p[0] >> p[1] >> p[2];
        } else if (kind == "f") {
            std::size_t i = 0, j = 0, k = 0;
            words >> i >> j >> k;
            ASSERT_TRUE(words && i <= points.size() && j <= points.size() && k <= points.size());
            const Point &a = points[i - 1], &b = points[j - 1], &c = points[k - 1];
            upward.push_back((b[0] - a[0]) * (a[2] - c[2]) - (a[2] - b[2]) * (c[0] - a[0]));
        }
    }
    EXPECT_EQ(points.size(), 4U * 6);
    ASSERT_EQ(upward.size(), 4U * 4);
    // The mirrored plate still shows its face to the same side, and no triangle of the L covers
    // its reentrant corner.
    for (std::size_t i = 0; i < 4; ++i) EXPECT_GT(upward[i], 0) << i;
    EXPECT_NEAR(upward[0] + upward[1] + upward[2] + upward[3], 2 * 6, 1e-9);
}

TEST_F(ExportTest, DamagedGeometryIsNotLeftOutInSilence) {
    std::string bytes = ReadAll(folder + "model.zvg");
    const std::size_t block = bytes.find("7zXZ");
    ASSERT_NE(block, std::string::npos);
    bytes[block + 40] = static_cast<char>(bytes[block + 40] ^ 0x55);
    std::ofstream(folder + "damaged.zvg", std::ios::binary) << bytes;
    EXPECT_EQ(Run("$Z export damaged.zvg -o x.glb"), 4) << err;
    EXPECT_EQ(Run("$Z preview damaged.zvg -o x.png --render 64x48"), 4) << err;
    EXPECT_FALSE(There("x.glb") || There("x.png"));
}

TEST_F(ExportTest, PreviewKeepsEveryPixel) {
    const std::vector<u8> pixels = {255, 0, 0, 255, 0, 255, 0, 128, 0, 0, 255, 1,
                                    1,   2, 3, 255, 9, 8,   7, 254, 0, 0, 0,   0};
    const auto save = [&](const std::string& name, u32 width, u32 height) {
        WriteBlock(folder + name, [&](CZVLGBlockSaver& saver) {
            SZVLGZvgGeoImage image;
            image.width = width;
            image.height = height;
            image.pixels = static_cast<u8*>(std::malloc(pixels.size()));
            std::memcpy(image.pixels, pixels.data(), pixels.size());
            saver.AddPreviewImage(image);
        });
    };
    save("image.zvg", 3, 2);
    ASSERT_EQ(Run("$Z preview image.zvg -o image.png"), 0) << err;
    EXPECT_EQ(PixelsOf("image.png"), pixels);
    // 0 or 4 bytes in 32 bits
    const std::pair<u32, u32> sizes[] = {{0x8000, 0x8000},         {0x10000, 0x4000},
                                         {0x10000, 0x10000},       {0x40000001, 1},
                                         {0xFFFFFFFF, 0xFFFFFFFF}, {0, 3}};
    for (const auto& [width, height] : sizes) {
        save("small.zvg", width, height);
        EXPECT_EQ(Run("$Z preview small.zvg -o x.png"), 4) << width << ' ' << err;
        EXPECT_EQ(err, "zvg: small.zvg: the preview image has no pixels\n") << width;
        EXPECT_FALSE(There("x.png"));
    }
}

TEST_F(ExportTest, ExtremePlacementsAreLeftOutOrDrawn) {
    const double scales[] = {0, 1e-300, 1e-30, 1e-9, 1e9, 1e12, 1e30, INFINITY, NAN};
    WriteBlock(folder + "wild.zvg", [&](CZVLGBlockSaver& saver) {
        Fill(saver);
        SZVLGZvgComp comp = Comp(L"Upper", L"Wild", L"wild");
        for (const double x : scales) {
            for (const double z : scales) {
                comp.geoRefs[0].geo.namedTransfs.push_back(
                    {L"plate", Transf({x, 0, 0, z, 0, 1, 0, 0, 0, x, z, 0})});
            }
        }
        saver.AddComp(comp);
    });
    EXPECT_EQ(Run("$Z preview wild.zvg -o wild.png --render 64x48"), 0) << err;
    EXPECT_EQ(Run("$Z export wild.zvg -o wild.glb"), 0) << err;
    EXPECT_EQ(Run("$Z export wild.zvg -o wild.obj"), 0) << err;
}

TEST_F(ExportTest, RendersTheSameModelOnATransparentGround) {
    ASSERT_EQ(Run("$Z preview model.zvg -o a.png --render 65x49"), 0) << err;
    ASSERT_EQ(Run("$Z preview model.zvg -o b.png --render 65x49"), 0) << err;
    EXPECT_EQ(ReadAll(folder + "a.png"), ReadAll(folder + "b.png"));
    const std::vector<u8> pixels = PixelsOf("a.png");
    ASSERT_EQ(pixels.size(), 65U * 49 * 4);
    std::size_t shown = 0;
    for (std::size_t i = 3; i < pixels.size(); i += 4) shown += pixels[i] > 32;
    EXPECT_GT(shown, pixels.size() / 4 / 20);
    for (const std::size_t corner : {0U, 64U, 65U * 48, 65U * 49 - 1}) {
        EXPECT_EQ(pixels[corner * 4 + 3], 0) << corner;
    }
    // What is packed holds the picture that is drawn of it, unless that is refused.
    ASSERT_EQ(Run("$Z pack t.obj -o drawn.zvg"), 0) << err;
    ASSERT_EQ(Run("$Z preview drawn.zvg -o stored.png"), 0) << err;
    ASSERT_EQ(Run("$Z preview drawn.zvg -o drawn.png --render 640x480"), 0) << err;
    EXPECT_EQ(ReadAll(folder + "stored.png"), ReadAll(folder + "drawn.png"));
    ASSERT_EQ(Run("$Z pack t.obj -o plain.zvg --no-preview"), 0) << err;
    EXPECT_EQ(Run("$Z preview plain.zvg -o x.png"), 5);
}

}  // namespace
