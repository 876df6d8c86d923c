#include <array>
#include <cmath>
#include <map>
#include <numbers>
#include <set>
#include <sstream>
#include <vector>

#include "tool_support.h"

// Bodies of models/bodies.ifc, whose volumes are known by arithmetic.

namespace {

using Point = std::array<double, 3>;

struct Body {
    std::vector<std::array<Point, 3>> triangles;
    std::set<std::string> materials;

    double Volume() const {
        double volume = 0;
        for (const auto& [a, b, c] : triangles) {
            volume += (a[0] * (b[1] * c[2] - b[2] * c[1]) + a[1] * (b[2] * c[0] - b[0] * c[2]) +
                       a[2] * (b[0] * c[1] - b[1] * c[0])) /
                      6;
        }
        return volume;
    }
    /// How often the line along Y through (x, z) goes through the surface.
    int Crossings(double x, double z) const {
        int crossings = 0;
        for (const auto& t : triangles) {
            const auto side = [&](const Point& from, const Point& to) {
                return (to[0] - from[0]) * (z - from[2]) - (to[2] - from[2]) * (x - from[0]) > 0;
            };
            const bool first = side(t[0], t[1]);
            crossings += first == side(t[1], t[2]) && first == side(t[2], t[0]) ? 1 : 0;
        }
        return crossings;
    }
    double Extreme(std::size_t axis, bool greatest) const {
        double extreme = greatest ? -1e9 : 1e9;
        for (const auto& triangle : triangles) {
            for (const Point& p : triangle) {
                extreme = greatest ? std::max(extreme, p[axis]) : std::min(extreme, p[axis]);
            }
        }
        return extreme;
    }
};

/// Of a file that `zvg export` wrote, in which Y is up; by the components' names.
std::map<std::string, Body> BodiesOf(const std::string& obj) {
    std::map<std::string, Body> bodies;
    std::vector<Point> points;
    Body* body = nullptr;
    std::istringstream lines(obj);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string word;
        words >> word;
        if (word == "v") {
            Point p = {};
            words >> p[0] >> p[2] >> p[1];
            p[1] = -p[1];
            points.push_back(p);
        } else if (word == "o") {
            body = &bodies[line.substr(line.rfind('/') + 1)];
        } else if (word == "usemtl" && body != nullptr) {
            words >> word;
            body->materials.insert(word.substr(0, word.find('.')));
        } else if (word == "f" && body != nullptr) {
            auto& triangle = body->triangles.emplace_back();
            for (Point& corner : triangle) {
                words >> word;
                corner = points.at(std::stoul(word) - 1);
            }
        }
    }
    return bodies;
}

class IfcBodiesTest : public ToolFixture {
  protected:
    void SetUp() override {
        ToolFixture::SetUp();
        ASSERT_EQ(Run("$Z --version"), 0) << err;
        if (out.find("IFC") == std::string::npos) GTEST_SKIP() << "this build reads no IFC";
    }

    std::map<std::string, Body> Packed(const std::string& options = "") {
        const std::string pack =
            "$Z pack " ZVG_TEST_MODELS_DIR "/bodies.ifc -o bodies.zvg --force ";
        EXPECT_EQ(Run(pack + "--no-preview " + options), 0) << err;
        said = err;
        EXPECT_EQ(Run("$Z export bodies.zvg -o bodies.obj --force"), 0) << err;
        return BodiesOf(ReadAll(folder + "bodies.obj"));
    }

    std::string said;
};

/// The part of a circle's area that a polygon of so many sides has, times pi.
double PolygonArea(int sides) {
    return sides / 2.0 * std::sin(2 * std::numbers::pi / sides);
}

TEST_F(IfcBodiesTest, VolumesAreTheOnesThatArithmeticGives) {
    const struct {
        const char* name;
        double volume;
    } cases[] = {
        {"flush", 3.0},
        {"nearly_flush", 3.0},
        {"through", 3.3},
        {"crossing", 2.7},
        {"side_by_side", 3.0},
        {"niche", 3.3},
        {"hollow", 3.5},
        {"round_hole", 3.6 - 0.3 * 0.04 * PolygonArea(32)},
        {"turned", 1.566},
        {"parted", 0.2378 * ((5.419819372 - 0.508) * 2.483125539 - 0.788802 * 1.451)},
        {"turned_union", 1.95},
        {"clipped", 0.6},
        {"clipped_in_box", 0.6},
        {"union", 1.5},
        {"union_touching", 2.0},
        {"union_apart", 2.0},
        {"intersection", 0.5},
        {"hole_first", 0.3},
        {"uncut", 1.0},
        {"column", 3 * 0.04 * PolygonArea(32)},
        {"ring", 2 * 0.2 * 0.3 * 0.9 * PolygonArea(72)},
        {"pipe", 2 * 0.0004 * PolygonArea(24)},
        {"block", 6.0},
        {"pyramid", 3.0},
    };
    const auto bodies = Packed();
    for (const auto& [name, volume] : cases) {
        ASSERT_TRUE(bodies.count(name)) << name;
        EXPECT_NEAR(bodies.at(name).Volume(), volume, 3e-5 * volume) << name;
    }
    EXPECT_NEAR(bodies.at("sphere").Volume(), 4.0 / 3 * std::numbers::pi / 8, 0.006);
}

TEST_F(IfcBodiesTest, OpeningsAreOpenAndNothingElseIs) {
    const auto bodies = Packed();
    const struct {
        const char* name;
        double x, z;  // in the middle of an opening
    } openings[] = {
        {"flush", 1.51, 0.98},    {"nearly_flush", 1.51, 0.98}, {"through", 1.51, 1.52},
        {"crossing", 1.51, 2.2},  {"crossing", 0.7, 1.52},      {"crossing", 1.49, 1.5},
        {"side_by_side", 1.3, 1}, {"side_by_side", 1.7, 1},     {"round_hole", 2, 1.51}};
    for (const auto& [name, x, z] : openings) EXPECT_EQ(bodies.at(name).Crossings(x, z), 0) << name;
    for (const char* name : {"flush", "nearly_flush", "through", "crossing", "side_by_side"}) {
        EXPECT_EQ(bodies.at(name).Crossings(3.51, 1.49), 2) << name;
    }
    EXPECT_EQ(bodies.at("niche").Crossings(1.52, 1.47), 2);
    EXPECT_EQ(bodies.at("hollow").Crossings(1.52, 1.47), 4);
}

TEST_F(IfcBodiesTest, WhatIsCutAwayEntirelyIsEmpty) {
    const auto bodies = Packed();
    EXPECT_EQ(bodies.count("gone"), 0U);
    EXPECT_EQ(bodies.count("intersection_touching"), 0U);
    ASSERT_EQ(Run("$Z list bodies.zvg"), 0) << err;
    EXPECT_NE(out.find("0Gone0000"), std::string::npos) << out;
}

TEST_F(IfcBodiesTest, WhatCannotBeCutIsNamed) {
    Packed("--report report.json");
    EXPECT_NE(said.find("openings could not be cut (2 times)"), std::string::npos) << said;
    const nlohmann::json report = nlohmann::json::parse(ReadAll(folder + "report.json"));
    nlohmann::json where;
    for (const nlohmann::json& finding : report["findings"]) {
        if (finding["kind"] == "openingNotCut") where = finding["where"];
    }
    EXPECT_EQ(where, nlohmann::json({"0Sheet0000000000000049", "0Uncut0000000000000052"}));
}

TEST_F(IfcBodiesTest, SurfacesHaveTheColoursOfTheirStyles) {
    const auto bodies = Packed();
    using Names = std::set<std::string>;
    EXPECT_EQ(bodies.at("clipped").materials, Names{"red"});
    EXPECT_EQ(bodies.at("hole_first").materials, Names{"black"});
    EXPECT_EQ(bodies.at("sheet").materials, (Names{"red", "white"}));
    const std::string materials = ReadAll(folder + "bodies.mtl");
    EXPECT_NE(materials.find("newmtl red.2\nKd 1 0 0\n"), std::string::npos) << materials;
    EXPECT_NE(materials.find("newmtl black.1\nKd 0 0 0\n"), std::string::npos) << materials;
    EXPECT_NE(materials.find("newmtl white.3\nKd 1 1 1\n"), std::string::npos) << materials;
}

TEST_F(IfcBodiesTest, CurvesAreAsRoundAsAskedFor) {
    const auto bodies = Packed("--tolerance 0.1");
    EXPECT_NEAR(bodies.at("column").Volume(), 3 * 0.04 * PolygonArea(100), 1e-5);
    EXPECT_NEAR(bodies.at("ring").Volume(), 2 * 0.2 * 0.3 * 0.9 * PolygonArea(120), 1e-5);
    EXPECT_NEAR(bodies.at("pipe").Volume(), 2 * 0.0004 * PolygonArea(32), 1e-6);
    for (const char* value : {"0", "-1", "nan", "1e9", "round"}) {
        EXPECT_EQ(Run(std::string("$Z pack x.ifc -o x.zvg --tolerance ") + value), 2) << value;
    }
}

TEST_F(IfcBodiesTest, PrimitivesStandOnTheirCorners) {
    const auto bodies = Packed();
    const struct {
        const char* name;
        Point low, high;
    } cases[] = {{"block", {0, 0, 0}, {1, 2, 3}},
                 {"pyramid", {0, 0, 0}, {3, 3, 1}},
                 {"sphere", {-0.5, -0.5, -0.5}, {0.5, 0.5, 0.5}},
                 {"pipe", {-0.02, -0.02, 0}, {0.02, 0.02, 2}}};
    for (const auto& [name, low, high] : cases) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            EXPECT_NEAR(bodies.at(name).Extreme(axis, false), low[axis], 3e-3) << name << axis;
            EXPECT_NEAR(bodies.at(name).Extreme(axis, true), high[axis], 3e-3) << name << axis;
        }
    }
}

/// Each process has its memory elsewhere; the last has every piece of it far from the others.
TEST_F(IfcBodiesTest, BytesDoNotDependOnAddresses) {
    Packed();
    const std::string bytes = ReadAll(folder + "bodies.zvg");
    for (const char* where : {"64", "1000000", "1"}) {
        setenv("MALLOC_MMAP_THRESHOLD_", where, 1);
        Packed();
        unsetenv("MALLOC_MMAP_THRESHOLD_");
        EXPECT_EQ(ReadAll(folder + "bodies.zvg"), bytes) << where;
    }
}

}  // namespace
