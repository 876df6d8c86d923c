#include "ZVSmartModel/Builder.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <tuple>

#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Diff.h"
#include "alloc_hooks.h"
#include "model/import/ShapeStore.h"
#include "model/pack/PackModel.h"
#include "support.h"

// Models that hosts make: what comes of them, and what of mistakes.

using namespace ZVSmartModel;
using support::Bytes;

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr Rgba red = {200, 10, 20}, blue = {0, 90, 255, 99};

NewShape SomeShape() {
    const std::vector<Point> wall = {{0, 0, 0}, {4, 0, 0}, {4, 0, 3}, {0, 0, 3}};
    const std::vector<Point> pane = {{1, 0, 1}, {2, 0, 1}, {2, 0, 2}};
    return {{{Look{"Brick", red}, wall, {{0, 1, 2}, {0, 2, 3}}, {}},
             {Look{"Glass", blue}, pane, {{2, 0, 1}}, {}}},
            {{"FootPrint", pane, true}}};
}

NewElement Wall(const std::string& guid, std::size_t shape) {
    NewElement wall;
    std::tie(wall.guid, wall.name, wall.className) = std::tuple(guid, "w\u00E4nde", "IfcWall");
    std::tie(wall.predefinedType, wall.typeName, wall.group) = std::tuple("SOLID", "W 300", "zone");
    wall.floor = 0;
    wall.shapes = {{shape, {1, 0, 0, 1, 0, 1, 6e-17, 2, 0, 0, 1, 3}}, {shape, identityTransform}};
    wall.properties = {{"Pset", "Length", "8.5", "length", "ft"}, {"", "Mark", "x", "text", ""}};
    wall.materials = {{"Brick", "masonry", 0.28, {{"", "Density", "1800", "number", "kg/m3"}}}};
    wall.parents = {"host", "whole"};
    return wall;
}

void Fill(Builder& builder) {
    builder.AddFloor({"Ground", 0, 3.5});
    builder.AddElement(Wall("wall", builder.AddShape(SomeShape())));
    NewElement bare;
    std::tie(bare.guid, bare.className) = std::tuple("bare", "IfcZone");
    builder.AddElement(bare);
}

/// The same as an importer hands it on.
Model SameModel() {
    Model model;
    model.storeys = {{L"Ground", 0, 3.5}};
    model.buildings = {{L"b", L"House", L"The house", L"s", L"Site"}};
    const std::vector<ModelPoint> wallPoints = {{4, 0, 3}, {0, 0, 0}, {4, 0, 0}, {0, 0, 3}};
    const std::vector<ModelPoint> pane = {{1, 0, 1}, {2, 0, 1}, {2, 0, 2}};
    const std::vector<ShapePart> parts = {{red, L"Brick", {{wallPoints, {{1, 2, 0}, {3, 1, 0}}}}},
                                          {blue, L"Glass", {{pane, {{0, 1, 2}}}}}};
    ShapeStore store;
    store.Add({parts, {{L"FootPrint", {{pane, true}}, {}, {}, {}}}, 0});
    model.shapes = store.Take();
    ModelElement wall, bare;
    std::tie(wall.globalId, wall.entityType, wall.typeName) =
        std::tuple(L"wall", L"IfcWall", L"W 300");
    std::tie(wall.predefinedType, wall.group) = std::tuple(L"SOLID", L"zone");
    wall.storey = wall.building = bare.building = 0;
    wall.belongsTo = {L"host", L"whole"};
    wall.shapes = {{0, {1, 0, 0, 1, 0, 1, 0, 2, 0, 0, 1, 3}}, {0, identityTransform}};
    wall.materials = {{L"Brick", L"masonry", {}}};
    wall.properties = PairsOf({{L"Element.Name", L"w\u00E4nde", L"text", L""},
                               {L"Pset.Length", L"8.5", L"length", L"ft"},
                               {L"Mark", L"x", L"text", L""}});
    wall.materials[0].properties = PairsOf({{L"LayerThickness", L"0.28", L"length", L"m"},
                                            {L"Density", L"1800", L"number", L"kg/m3"}});
    std::tie(bare.globalId, bare.entityType) = std::tuple(L"bare", L"IfcZone");
    model.elements = {wall, bare};
    return model;
}

template <class Act>
Bytes Built(const BuilderOptions& options, Act act) {
    return support::Streamed([&](support::CZVFTOutStream& out) {
        Builder builder(out, options);
        act(builder);
        builder.Finish();
    });
}

/// The status and the text of the error that `act` throws.
template <class Act>
std::string Refused(Act act) {
    try {
        act();
    } catch (const Error& error) {
        return std::to_string(static_cast<int>(error.GetStatus())) + ' ' + error.what();
    }
    return "";
}

TEST(Builder, StoresWhatPackingStores) {
    for (const unsigned int version : {0U, 1U, 2U, 4U}) {
        PackInput input;
        input.job.formatVersion = version;
        input.job.drawPreview = false;
        const Bytes packed = support::Streamed([&](support::CZVFTOutStream& out) {
            PackModel(SameModel(), input, out, [](const char*, std::size_t, std::size_t) {});
        });
        BuilderOptions options;
        options.title = BlockFile(packed).Info().firstText;
        options.building = {"b", "House", "The house", "s", "Site"};
        options.formatVersion = version;
        EXPECT_EQ(Built(options, Fill), packed) << version;
    }
}

TEST(Builder, TakesFloorsShapesAndThePictureInAnyOrder) {
    const Picture picture = {2, 1, {1, 2, 3, 4, 5, 6, 7, 8}};
    const BlockFile file(Built({}, [&](Builder& builder) {
        Fill(builder);
        EXPECT_EQ(builder.AddShape(SomeShape()), 0U);  // stands once
        NewElement lamp = Wall("lamp", builder.AddShape({}));
        lamp.floor = builder.AddFloor({"Roof", 7, 0});
        builder.AddElement(lamp);
        builder.SetPreview(picture);
        EXPECT_EQ(Refused([&] { builder.SetPreview(picture); }), "2 the file has a picture");
    }));
    EXPECT_EQ(file.Info().identifications, 3U);  // the shape, the wall's body and the picture
    EXPECT_EQ(file.Preview().pixels, picture.pixels);
    std::string floors;
    for (const Floor& floor : file.Floors()) floors += floor.name + std::to_string(floor.order);
    EXPECT_EQ(floors, "Ground0unassigned1Roof2");
    EXPECT_EQ(file.Read(file.FindGuid("lamp").value()).materials.at(0).thickness, 0.28);
}

/// Expects each change of something good to be refused for a reason that has this text.
template <class Thing, class Use>
void ExpectMistakes(Use use, const Thing& good,
                    const std::vector<std::pair<const char*, void (*)(Thing&)>>& changes) {
    for (const auto& [why, change] : changes) {
        Thing wrong = good;
        change(wrong);
        const std::string refused = Refused([&] { use(wrong); });
        EXPECT_EQ(refused.substr(0, 2), "2 ") << why;
        EXPECT_NE(refused.find(why), std::string::npos) << why << ": " << refused;
    }
}

TEST(Builder, RefusesMistakesAndGoesOn) {
    const Bytes with = Built({}, [](Builder& builder) {
        Fill(builder);
        ExpectMistakes<NewFloor>([&](auto& wrong) { builder.AddFloor(wrong); }, {"F", 1, 1},
                                 {{"no name", [](auto& f) { f.name = ""; }},
                                  {"named Ground", [](auto& f) { f.name = "Ground"; }},
                                  {"named unassigned", [](auto& f) { f.name = "unassigned"; }},
                                  {"floor F has", [](auto& f) { f.elevation = nan; }}});
        ExpectMistakes<NewShape>(
            [&](auto& wrong) { builder.AddShape(wrong); }, SomeShape(),
            {{"triangle 1 leads to point 4", [](auto& s) { s.surfaces[0].triangles[1][2] = 4; }},
             {"surface 1 of a shape, point 2", [](auto& s) { s.surfaces[1].points[2][0] = nan; }},
             {"curve 0 of a shape, point 0", [](auto& s) { s.curves[0].points[0][1] = 1e12; }}});
        ExpectMistakes<NewElement>(
            [&](auto& wrong) { builder.AddElement(wrong); }, Wall("new", 0),
            {{"names shape 1", [](auto& e) { e.shapes[1].shape = 1; }},
             {"names floor 1", [](auto& e) { e.floor = 1; }},
             {"placed, has", [](auto& e) { e.shapes[0].toWorld[5] = nan; }},
             {"has the GUID wall", [](auto& e) { e.guid = "wall"; }},
             {"\"\"", [](auto& e) { e.guid = ""; }},
             {"\"none\"", [](auto& e) { e.group = "none"; }},
             {"no class", [](auto& e) { e.className = ""; }},
             {"Pset.Length, whose kind", [](auto& e) { e.properties[0].kind = "a b"; }},
             {"without a name", [](auto& e) { e.materials[0].properties[0].name = ""; }},
             {"a thickness", [](auto& e) { e.materials[0].thickness = nan; }}});
        ExpectMistakes<Picture>([&](auto& wrong) { builder.SetPreview(wrong); },
                                {1, 1, {1, 2, 3, 4}}, {{"4 bytes", [](auto& p) { p.width = 2; }}});
    });
    EXPECT_EQ(with, Built({}, Fill));
}

TEST(Builder, NamesOfBodiesAreNoDifference) {
    const auto walls = [](const char* first, const char* second) {
        return BlockFile(Built({}, [&](Builder& builder) {
            builder.AddFloor({"Ground", 0, 3.5});
            builder.AddShape(SomeShape());
            for (const std::string guid : {first, second}) {
                builder.AddElement(Wall(guid, 0));
                NewElement beside = Wall(guid + " beside", 0);
                beside.shapes[0].toWorld[3] = guid == "x" ? 7 : 9;
                builder.AddElement(beside);
            }
        }));
    };
    std::string different;
    Compare(walls("x", "y"), walls("y", "x"), [&](const Difference& difference) {
        different += difference.element ? difference.element->guid : "floor";
        return true;
    });
    EXPECT_EQ(different, "");
}

/// Takes so many writes, and no more.
struct FullStream : support::CZVFTAllocBufferOutStream {
    FullStream(support::AllocBuffer* buffer, int writes)
        : CZVFTAllocBufferOutStream(buffer), left(writes) {}
    std::uint64_t Write(const void* bytes, std::uint64_t size) override {
        return left-- > 0 ? CZVFTAllocBufferOutStream::Write(bytes, size) : 0;
    }
    int left;
};

TEST(Builder, SaysWhenItsStreamFails) {
    BuilderOptions options;
    options.geosPerBlock = 1;
    std::string failure = "at first";
    int writes = 0;
    for (; !failure.empty(); ++writes) {
        support::OwnedBuffer buffer;
        FullStream out(&buffer, writes);
        Builder builder(out, options);
        failure = Refused([&] { Fill(builder), builder.Finish(); });
        EXPECT_EQ(failure.substr(0, 2), failure.empty() ? "" : "3 ") << failure;
        const std::string later = Refused([&] { builder.AddFloor({"later", 9, 0}); });
        EXPECT_EQ(later, failure.empty() ? "2 the file is finished" : failure);
    }
    EXPECT_GT(writes, 20);
}

TEST(Builder, LeavesAWholeFileOrNone) {
    std::string folder = testing::TempDir() + "builder-XXXXXX";
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    const std::string path = folder + "/a.zvg";
    EXPECT_EQ(Refused([&] { Builder(path + "/none"); }).substr(0, 2), "3 ");
    for (const rlim_t bytes : {rlim_t{512}, RLIM_INFINITY}) {
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit = {};
        getrlimit(RLIMIT_FSIZE, &limit);
        limit.rlim_cur = std::min(bytes, limit.rlim_max);
        setrlimit(RLIMIT_FSIZE, &limit);
        Builder(Builder(path)).AddFloor({"Ground", 0, 0});
        const std::string failure = Refused([&] {
            Builder builder(path);
            Fill(builder);
            EXPECT_FALSE(std::filesystem::exists(path));
            builder.Finish();
        });
        EXPECT_EQ(failure, bytes == 512 ? "3 " + path + ": File too large" : "");
        EXPECT_EQ(std::filesystem::is_empty(folder), bytes == 512);
    }
    EXPECT_EQ(BlockFile(path).ElementCount(), 2U);
    std::filesystem::remove_all(folder);
}

TEST(Builder, KeepsNoBodies) {
    if (!AllocHooks::available) GTEST_SKIP();
    support::OwnedBuffer buffer;
    support::CZVFTAllocBufferOutStream out(&buffer);
    BuilderOptions options;
    options.fast = true;
    Builder builder(out, options);
    builder.AddFloor({"Ground", 0, 0});
    NewShape shape = SomeShape();
    Triangles& surface = shape.surfaces[0];
    for (std::uint32_t i = 4; i < 100; ++i) {
        surface.points.push_back({i * 0.1, 0, i * i * 0.1});
        surface.triangles.push_back({i - 2, i - 1, i});
    }
    std::size_t begun = 0;
    for (int i = 0; i < 20000; ++i) {
        surface.points[50][1] = i / 16.0;
        builder.AddElement(Wall("element " + std::to_string(i), builder.AddShape(shape)));
        if (i == 4999) begun = AllocHooks::BytesInUse();
    }
    // A body takes about 4000 bytes, and compresses to few.
    EXPECT_LT((AllocHooks::BytesInUse() - begun) / 15000, 2000U);
    builder.Finish();
}

}  // namespace
