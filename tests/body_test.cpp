// Bodies of elements, whose triangles, curves, normals and measures are known by arithmetic.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <thread>

#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Body.h"
#include "failure_of.h"
#include "support.h"

namespace {

using namespace ZVSmartModel;
using namespace support;

/// Of 1 m from the origin on; without its lid it is open.
SZVLGZvgGeo Cube(bool lid = true) {
    SZVLGZvgGeo geo;
    CZVIMShell& cube = geo.shells.emplace_back();
    for (const double z : {0., 1.}) cube.AddPts({{0, 0, z}, {1, 0, z}, {1, 1, z}, {0, 1, z}});
    cube.AddFaceIndex({0, 3, 2, 1});
    for (const int i : {0, 1, 2, 3}) cube.AddFaceIndex({i, (i + 1) % 4, (i + 1) % 4 + 4, i + 4});
    if (lid) cube.AddFaceIndex({4, 5, 6, 7});
    return geo;
}

/// Points of a grid over 2 m × 2 m.
SZVLGZvgGeo Grid(int side) {
    SZVLGZvgGeo geo;
    CZVIMMesh& mesh = geo.meshes.emplace_back();
    mesh.SetRow(side);
    mesh.SetColumn(side);
    const double step = 2. / (side - 1);
    for (int i = 0; i < side * side; ++i) mesh.AddPt({i % side * step, i / side * step, 0});
    return geo;
}

CZVIMTransf Transf(const Transform& rows) {
    CZVIMTransf transf;
    for (int i = 0; i < 12; ++i) transf.SetAt(i / 4, i % 4, rows[std::size_t(i)]);
    return transf;
}

SZVLGZvgGeo Nested(const SZVLGZvgGeo& inner, u16 flags, const Transform& at = identityTransform) {
    SZVLGZvgGeo geo;
    SZVLGZvgSubGeo& sub = geo.subGeos.emplace_back();
    sub.geo = inner;
    sub.attr.flags = flags;
    sub.attr.red = 255;
    sub.attr.styleName = L"brick";
    sub.attr.transf = Transf(at);
    return geo;
}

SZVLGZvgComp Wall(const std::wstring& name, const SZVLGZvgGeo& geo) {
    SZVLGZvgComp comp = Comp(SerialKey(name));
    comp.geoRefs = {{name, geo, 0, 0, 0, {}, {}}};
    return comp;
}

/// A file of one element, and shapes that it may place.
BlockFile FileWith(const SZVLGZvgGeo& geo,
                   const std::vector<std::pair<std::wstring, SZVLGZvgGeo>>& shapes = {}) {
    return BlockFile(Saved(4, 0, [&](CZVLGBlockSaver& saver) {
        for (const auto& [name, shape] : shapes) saver.AddIdentificationGeo(name, shape);
        saver.AddComp(Wall(L"wall", geo));
    }));
}

Body BodyOf(const SZVLGZvgGeo& geo, const BodyOptions& options = {}) {
    return ReadBody(FileWith(geo), {0, 0}, options);
}

TEST(Body, MeasuresOfRecords) {
    SZVLGZvgGeo frame, strays = Cube();
    // A square of 4 m around a hole of 2 m, cut open from corner to corner.
    frame.polyFaceMeshes.resize(1);
    frame.polyFaceMeshes[0].points = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0},
                                      {1, 1, 0}, {3, 1, 0}, {3, 3, 0}, {1, 3, 0}};
    frame.polyFaceMeshes[0].facesIndex = {10, 0, 1, 2, 3, 0, 4, 7, 6, 5, 4};
    strays.shells[0].AddPts({{std::nan(""), 0, 0}, {0, 2 * std::numeric_limits<double>::max(), 0}});
    for (const int stray : {8, 9, 10, -1}) strays.shells[0].AddFaceIndex({0, 1, stray});
    const Transform mirrored = {-2, 0, 0, 5, 0, 1, 0, 5, 0, 0, 1, 5};
    const Transform far = {.8, -.6, 0, 1e7, .6, .8, 0, -1e7, 0, 0, 1, 1e7};
    struct Case {
        SZVLGZvgGeo geo;
        std::size_t triangles;
        double area, volume;  // 0 where it is open
    };
    // clang-format off
    const Case cases[] = {{Cube(), 12, 6, 1}, {Cube(false), 10, 5, 0},
                          {Grid(3), 8, 4, 0}, {frame, 8, 12, 0}, {strays, 12, 6, 1},
                          {Nested(Cube(), DisplayAttrFlag::transf, mirrored), 12, 10, 2},
                          {Nested(Cube(), DisplayAttrFlag::transf, far), 12, 6, 1}};
    // clang-format on
    for (const Case& expected : cases) {
        const Body body = BodyOf(expected.geo);
        EXPECT_EQ(body.surfaces.at(0).triangles.size(), expected.triangles);
        const Measures measures = Measure(body);
        EXPECT_NEAR(measures.area, expected.area, 1e-6);
        EXPECT_NEAR(measures.closed ? measures.volume : 0, expected.volume, 1e-6);
    }
}

TEST(Body, PlacedShapesByLook) {
    SZVLGZvgGeo places, shape = Nested(Nested(Cube(false), 0),  // takes the colour around it
                                       DisplayAttrFlag::colour | DisplayAttrFlag::styleName);
    shape.shells = Cube().shells;
    const Transform mirrored = {-2, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 3};
    places.namedTransfs = {{L"shape", Transf({0, -1, 0, 10, 1, 0, 0, 0, 0, 0, 1, 0})},
                           {L"not there", CZVIMTransf()},
                           {L"shape", Transf(mirrored)},
                           {L"shape", Transf({std::nan("")})}};
    const BlockFile file = FileWith(places, {{L"shape", shape}});
    const Body body = ReadBody(file, {0, 0});
    ASSERT_EQ(body.surfaces.size(), 2U);
    EXPECT_EQ(body.surfaces[1].look, (Look{"brick", {255, 0, 0, 255}}));
    EXPECT_EQ(body.surfaces[1].triangles.size(), 20U);
    const Measures measures = Measure({{body.surfaces[0]}, {}});
    EXPECT_TRUE(measures.closed);
    EXPECT_NEAR(measures.volume, 1 + 2, 1e-9);
    EXPECT_EQ(measures.box.low, (Point{-2, 0, 0}));
    EXPECT_EQ(measures.box.high, (Point{10, 1, 4}));

    const Shapes shapes = ReadShapes(file);
    EXPECT_EQ(shapes.shapes.at(0).key, "shape");
    ASSERT_EQ(shapes.placements.size(), 2U);
    EXPECT_EQ(shapes.placements[1].toWorld, mirrored);
    EXPECT_EQ(shapes.missing, 1U);
    Selection doors;
    doors.classNames = {"IfcDoor"};
    EXPECT_TRUE(ReadShapes(file, doors).placements.empty());
    const auto cancel = [](const std::string&, double) { return false; };
    EXPECT_EQ(FailureOf([&] { ReadShapes(file, {}, {}, cancel); }), Status::Cancelled);
}

TEST(Body, AHostThatAsksInPartsGetsAShapeOnce) {
    SZVLGZvgGeo places = Grid(3);
    places.namedTransfs = {{L"shape", Transf({1, 0, 0, 5, 0, 1, 0, 0, 0, 0, 1, 0})}};
    Bytes bytes = Saved(4, 1, [&](CZVLGBlockSaver& saver) {
        saver.AddIdentificationGeo(L"shape", Cube());
        saver.AddIdentificationGeo(L"places", places);
        saver.AddIdentificationGeo(L"other", Grid(4));
        for (const wchar_t* floor : {L"0", L"1", L"2"}) {
            SZVLGZvgComp comp = Comp(SerialKey(std::wstring(L"on ") + floor));
            comp.classLevel1Name = floor;
            comp.geoRefs.resize(1);
            for (const wchar_t* name : {L"shape", L"places", L"other"}) {
                comp.geoRefs[0].geoIds.emplace_back().guidName = SerialKey(std::wstring(name));
                if (*floor == L'2') break;
            }
            saver.AddComp(comp);
        }
    });
    CZVFTReadBufferInStream in(bytes.data(), bytes.size());
    OpenOptions options;
    options.cacheBytes = 1;
    const BlockFile file(in, options);
    std::vector<std::string> keys;
    const KnownShape isKnown = [&](const std::string& key) {
        return std::find(keys.begin(), keys.end(), key) != keys.end();
    };
    const auto read = [&](const char* floor, const KnownShape& known) {
        Selection part;
        part.floor = floor;
        return ReadShapes(file, part, {}, {}, known);
    };
    const Shapes first = read("0", isKnown);
    for (const Shape& shape : first.shapes) {
        keys.push_back(shape.key);
        EXPECT_EQ(shape.surfaces.size(), 1U) << shape.key;
    }
    EXPECT_EQ(keys, (std::vector<std::string>{"shape", "places", "other"}));
    const Shapes second = read("1", isKnown);
    ASSERT_EQ(second.placements.size(), 4U);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(second.placements[i].toWorld, first.placements[i].toWorld);
        const Shape& shape = second.shapes[second.placements[i].shape];
        EXPECT_EQ(shape.key, first.shapes[first.placements[i].shape].key);
        EXPECT_EQ(shape.surfaces.empty(), shape.key != "places");  // which is read for the other
    }
    EXPECT_EQ(read("1", nullptr).shapes.at(0).surfaces.size(), 1U);

    // It is not read again: the first block is not there any more.
    constexpr u8 xz[] = {0xFD, '7', 'z', 'X', 'Z'};
    *std::search(bytes.begin(), bytes.end(), std::begin(xz), std::end(xz)) = 0;
    EXPECT_EQ(read("2", isKnown).placements.size(), 1U);
    EXPECT_TRUE(file.DamageMet().empty());
    EXPECT_TRUE(read("2", nullptr).placements.empty());
}

TEST(Body, CurvesKeepToTheChordError) {
    const CZVIMPosition center(1, 2, 3);
    SZVLGZvgGeo geo;
    geo.circles = {{center, {1, 1, 1}, 5}, {center, {0, 0, 2}, 0.01}};
    geo.boundArcs.emplace_back(center, CZVIMVector(0, 0, 1), CZVIMPosition(6, 2, 3),
                               -std::numbers::pi / 2);
    geo.polylines.resize(1);
    geo.lineSegments = {{{0, 0, 0}, {0, 0, 9}}, {{0, 0, 0}, {0, 0, std::nan("")}}};
    geo = Nested(geo, DisplayAttrFlag::styleName);
    EXPECT_TRUE(BodyOf(geo).IsEmpty());
    BodyOptions options = {Normals::None, 0, true, 0.001};
    const std::vector<Polyline> curves = BodyOf(geo, options).curves;
    ASSERT_EQ(curves.size(), 4U);  // the segment, the arc, the circles
    EXPECT_EQ(curves[0].points, (std::vector<Point>{{0, 0, 0}, {0, 0, 9}}));
    EXPECT_EQ(curves[0].role, "brick");
    EXPECT_EQ(curves[1].points.front(), (Point{6, 2, 3}));
    EXPECT_NEAR(curves[1].points.back()[1], -3, 1e-9);
    EXPECT_EQ(curves[3].points.size(), 24U);
    for (const Polyline& round : {curves[1], curves[2]}) {
        for (std::size_t i = 1; i < round.points.size(); ++i) {
            const Point &a = round.points[i - 1], &b = round.points[i];
            EXPECT_NEAR(std::hypot(a[0] - 1, a[1] - 2, a[2] - 3), 5, 1e-9);
            const double off =
                5 - std::hypot((a[0] + b[0]) / 2 - 1, (a[1] + b[1]) / 2 - 2, (a[2] + b[2]) / 2 - 3);
            EXPECT_NEAR(off, options.chordError * 0.8, options.chordError * 0.2000001);
        }
    }
    options.chordError = 0;
    EXPECT_EQ(FailureOf([&] { BodyOf(geo, options); }), Status::Usage);
}

TEST(Body, NormalsBreakAtCreases) {
    constexpr int sides = 24;
    SZVLGZvgGeo tube;  // of radius 1, whose ends meet in points of their own
    CZVIMMesh& mesh = tube.meshes.emplace_back();
    mesh.SetRow(2);
    mesh.SetColumn(sides + 1);
    for (int i = 0; i < 2 * (sides + 1); ++i) {
        const double angle = 2 * std::numbers::pi * (i % (sides + 1)) / sides;
        mesh.AddPt({std::cos(angle), std::sin(angle), i > sides ? 1. : 0.});
    }
    const auto surfaceOf = [](const SZVLGZvgGeo& geo, Normals normals, double crease) {
        return BodyOf(geo, {normals, crease, false, 1}).surfaces.at(0);
    };
    EXPECT_EQ(surfaceOf(Cube(), Normals::Flat, 0).points.size(), 24U);
    EXPECT_EQ(surfaceOf(Cube(), Normals::Smooth, 0.5).points.size(), 24U);
    EXPECT_EQ(surfaceOf(tube, Normals::Smooth, 0.2).points.size(), 4U * sides);
    EXPECT_EQ(surfaceOf(Cube(), Normals::Smooth, 2).points.size(), 8U);
    const Triangles smooth = surfaceOf(tube, Normals::Smooth, 0.5);
    ASSERT_EQ(smooth.normals.size(), 2U * (sides + 1));
    for (std::size_t i = 0; i < smooth.points.size(); ++i) {
        EXPECT_NEAR(smooth.normals[i][0], smooth.points[i][0], 1e-6);
        EXPECT_NEAR(smooth.normals[i][1], smooth.points[i][1], 1e-6);
    }
}

TEST(Body, WhatIsNotThereOrDamagedOrTooMuch) {
    Parts parts = PartsOf(Saved(4, 1, [](CZVLGBlockSaver& saver) {
        for (const wchar_t* name : {L"whole", L"damaged"}) saver.AddComp(Wall(name, Cube()));
        saver.AddComp(Comp(SerialKey(L"no body")));
    }));
    Block& block = parts.geoBlocks.at(1);
    block.content.resize(block.content.size() / 2);
    block.encoded.clear();
    const BlockFile file(PutTogether(parts));
    for (int times = 0; times < 2; ++times) {
        EXPECT_NEAR(Measure(ReadBody(file, {0, 0})).volume, 1, 1e-9);
        EXPECT_EQ(FailureOf([&] { ReadBody(file, {0, 1}); }), Status::Damaged);
        EXPECT_TRUE(ReadBody(file, {0, 2}).IsEmpty());
        EXPECT_EQ(FailureOf([&] { ReadBody(file, {0, 3}); }), Status::NotFound);
        EXPECT_EQ(ReadShapes(file).placements.size(), 1U);
    }
    // A few bytes that ask for 250,000 grids.
    SZVLGZvgGeo many, more;
    many.namedTransfs.assign(500, {L"grid", CZVIMTransf()});
    more.namedTransfs.assign(500, {L"many", CZVIMTransf()});
    const BlockFile bomb = FileWith(more, {{L"grid", Grid(40)}, {L"many", many}});
    EXPECT_EQ(FailureOf([&] { ReadBody(bomb, {0, 0}); }), Status::Damaged);
}

TEST(Body, ThreadsAskOneFile) {
    constexpr unsigned int count = 32;  // more than stays decoded
    const BlockFile file(Saved(4, 3, [](CZVLGBlockSaver& saver) {
        saver.SetEncodeFastMod(true);
        for (int i = 0; i < int(count); ++i) saver.AddComp(Wall(std::to_wstring(i), Grid(100 + i)));
        saver.SetEncodeFastMod(false);
    }));
    unsigned int right[2] = {};
    const auto ask = [&](int thread) {
        for (unsigned int i = 0; i < 2 * count; ++i) {
            const std::size_t cells = 99 + i * 7 % count;
            const Body body = ReadBody(file, {0, i * 7 % count});
            right[thread] += body.surfaces.at(0).triangles.size() == 2 * cells * cells;
        }
    };
    std::thread other(ask, 0);
    ask(1);
    other.join();
    EXPECT_EQ(right[0] + right[1], 4 * count);
}

/// All shapes and what was met on the way, in one text.
std::string AllShapes(const Bytes& bytes, unsigned int threads) try {
    OpenOptions options;
    options.threads = threads;
    const BlockFile file(bytes, options);
    const Shapes shapes = ReadShapes(file, {}, {Normals::Flat});
    std::string text;
    for (const Shape& shape : shapes.shapes) {
        const Triangles& surface = shape.surfaces.at(0);
        text += shape.key + ' ' + std::to_string(surface.triangles.size()) + ' ' +
                std::to_string(surface.normals.size()) + '\n';
    }
    for (const Placement& placement : shapes.placements) {
        text += std::to_string(placement.shape) + ' ';
    }
    for (const Damage& damage : file.DamageMet()) text += damage.reason + '\n';
    return text;
} catch (const Error& error) {
    return error.what();
}

TEST(Body, ThreadsReadAheadWhatIsThere) {
    const Bytes whole = Saved(4, 3, [](CZVLGBlockSaver& saver) {
        for (int i = 0; i < 24; ++i) {
            SZVLGZvgComp wall = Wall(std::to_wstring(i), Grid(3 + i));
            wall.classLevel1Name = std::to_wstring(i / 4);
            saver.AddComp(wall);
        }
    });
    for (std::size_t at = 0; at < whole.size(); at += 29) {
        Bytes damaged = whole;
        if (at != 0) damaged[at] ^= 0x20;
        EXPECT_EQ(AllShapes(damaged, 4), AllShapes(damaged, 1)) << at;
    }
    const std::string all = AllShapes(whole, 4);
    EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 24);
    OpenOptions options;
    options.threads = 4;
    const BlockFile file(whole, options);
    const auto stop = [](const std::string&, double) { return false; };
    EXPECT_EQ(FailureOf([&] { ReadShapes(file, {}, {}, stop); }), Status::Cancelled);
    EXPECT_EQ(ReadShapes(file).shapes.size(), 24U);
}

}  // namespace
