// Parametric faces that share their geometries.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support.h"

namespace {

using namespace ZVSmartZvg;
using ZVIM::GeometryPrimitiveResource::coordinate_transf;

constexpr double pi = 3.14159265358979323846;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

/// A saver that writes to memory.
struct Building {
    Building() { saver.Init(&out, {}); }

    bool Relate(const SZVLGParamCylinderFace& face, SZVLGZvgGeoRelInclude& rel) {
        return saver.GetRelIncludeByCylinderFace(face, rel);
    }
    bool Relate(const SZVLGParamRevolvedFace& face, SZVLGZvgGeoRelInclude& rel) {
        return saver.GetRelIncludeByRevolvedFace(face, rel);
    }
    bool Relate(const SZVLGParamRuledFace& face, SZVLGZvgGeoRelInclude& rel) {
        return saver.GetRelIncludeByRuledFace(face, rel);
    }
    /// The number at the end of the face's key, -1 where it is refused.
    template <class Face>
    int KeyNumber(const Face& face) {
        SZVLGZvgGeoRelInclude rel;
        return Relate(face, rel) ? std::stoi(rel.key.substr(18)) : -1;
    }
    /// Expects that `face` is refused after `damage` and leaves `rel` as it was.
    template <class Face, class Damage>
    void Refuses(Face face, Damage damage) {
        SZVLGZvgGeoRelInclude rel{L"before", {}};
        rel.transform.SetAt(1, 3, 77);
        const CZVIMTransf before = rel.transform;
        damage(face);
        EXPECT_FALSE(Relate(face, rel));
        EXPECT_EQ(rel.key, L"before");
        EXPECT_EQ(rel.transform, before);
    }
    CZVLGBlockSaver saver;
    support::OwnedBuffer buffer;
    support::CZVFTAllocBufferOutStream out{&buffer};
};

CZVIMPosition At(const CZVIMTransf& frame, double radius, double angle, double height) {
    return CZVIMPosition(radius * std::cos(angle), radius * std::sin(angle), height)
        .TransformBy(frame);
}

/// A face that turns about the frame's Z axis by one radian.
template <class Face>
Face Turned(const CZVIMTransf& frame, double radius, double start) {
    Face face;
    face.center = At(frame, 0, 0, 0);
    face.radiusVector = At(frame, radius, 0, 0) - face.center;
    face.refVector = At(frame, radius, pi / 2, 0) - face.center;
    face.axis = At(frame, 0, 0, 1) - face.center;
    face.startAngle = start;
    face.endAngle = start + 1;
    return face;
}

/// A quad on a cylinder of height 3, its points on the cap planes.
SZVLGParamCylinderFace Cylinder(double radius, const CZVIMTransf& frame = {}, double start = 0.5) {
    auto face = Turned<SZVLGParamCylinderFace>(frame, radius, start);
    face.endHeight = 3;
    for (const double height : {0.0, 3.0}) {
        face.shell.AddPt(At(frame, radius, start, height));
        face.shell.AddPt(At(frame, radius, start + 1, height));
    }
    face.shell.AddFaceIndex({0, 1, 3, 2});
    return face;
}

SZVLGParamRevolvedFace Revolved(double radius, const CZVIMTransf& frame = {}, double start = 0.5) {
    auto face = Turned<SZVLGParamRevolvedFace>(frame, radius, start);
    face.profile = {{radius, 0, 0}, {radius / 2, 0, 1}, {radius, 0, 2}};
    return face;
}

SZVLGParamRuledFace Ruled(double width, const CZVIMTransf& frame = {}) {
    SZVLGParamRuledFace face;
    face.firstColumn = {{0, 0, 0}, {0, 0, 0}, {width, 0, 0}, {width, 0, 2}};
    face.secondColumn = {{0, 3, 0}, {1, 3, 1}, {2, 3, 4}, {2, 3, 5}};
    for (CZVIMPosition& point : face.firstColumn) point.TransformBy(frame);
    for (CZVIMPosition& point : face.secondColumn) point.TransformBy(frame);
    return face;
}

TEST(ParamFace, KeysAgreeWithinAThousandth) {
    const CZVIMTransf elsewhere = coordinate_transf({70, -8, 9}, {1, 2, 3}, {0, 1, -4});
    Building building;
    EXPECT_EQ(building.KeyNumber(Cylinder(1.0000)), 0);
    EXPECT_EQ(building.KeyNumber(Cylinder(1.0009, elsewhere)), 0);
    EXPECT_EQ(building.KeyNumber(Cylinder(1.0011)), 1);
    SZVLGParamCylinderFace face = Cylinder(1);
    std::swap(face.startHeight, face.endHeight);
    EXPECT_EQ(building.KeyNumber(face), 0);
    face.axis = -1.0 * face.axis;  // the caps are now at 0 and -3: the whole shell is compared
    EXPECT_EQ(building.KeyNumber(face), 2);
    face.shell.TransformBy(coordinate_transf({0, 0, -3}, {1, 0, 0}, {0, 1, 0}));
    EXPECT_EQ(building.KeyNumber(face), 3);
    face = Cylinder(1);
    std::swap(face.radiusVector, face.refVector);
    EXPECT_EQ(building.KeyNumber(face), 3);  // again on the caps at 0 and -3
    EXPECT_EQ(building.KeyNumber(Cylinder(1e-5)), 4);
    EXPECT_EQ(building.saver.CreateIncludeBlockGeo({}), L"mater_include_key_5");
    EXPECT_EQ(building.KeyNumber(Revolved(1.0000)), 6);
    EXPECT_EQ(building.KeyNumber(Revolved(1.0009, elsewhere, 2)), 6);
    EXPECT_EQ(building.KeyNumber(Revolved(1.0011)), 7);
    SZVLGZvgGeoRelInclude rel;
    EXPECT_TRUE(building.Relate(Ruled(1.0000), rel));
    EXPECT_EQ(rel.key, L"mater_include_key_8");
    EXPECT_TRUE(rel.transform.identity());  // X along the first column, Y towards the second
    EXPECT_EQ(building.KeyNumber(Ruled(1.0009, elsewhere)), 8);
    EXPECT_EQ(building.KeyNumber(Ruled(1.0011)), 9);
    EXPECT_EQ(Building().saver.CreateIncludeBlockGeo({}), L"mater_include_key_0");
}

template <class Face>
void RefusesBadTurns(Building& building, const Face& good) {
    for (const double bad : {nan, infinite, -infinite, 1e300}) {
        for (const auto vector : {&Face::axis, &Face::radiusVector, &Face::refVector}) {
            building.Refuses(good, [=](Face& face) { (face.*vector).SetY(bad); });
            building.Refuses(good, [=](Face& face) { face.*vector = {}; });
        }
        building.Refuses(good, [bad](Face& face) { face.center.SetY(bad); });
        building.Refuses(good, [bad](Face& face) { face.startAngle = bad; });
        building.Refuses(good, [bad](Face& face) { face.endAngle = bad; });
    }
    building.Refuses(good, [](Face& face) { face.refVector = -3.0 * face.radiusVector; });
    building.Refuses(good, [](Face& face) { face.endAngle = face.startAngle - 1; });
    building.Refuses(good, [](Face& face) { face.startAngle = 0, face.endAngle = 2 * pi; });
}

TEST(ParamFace, RefusalsStoreNothing) {
    Building building;
    RefusesBadTurns(building, Cylinder(1));
    RefusesBadTurns(building, Revolved(1));
    for (const double bad : {nan, infinite, 1e300}) {
        building.Refuses(Cylinder(1), [bad](auto& face) { face.startHeight = bad; });
        building.Refuses(Cylinder(1), [bad](auto& face) { face.shell.AddPt({0, bad, 0}); });
        building.Refuses(Revolved(1), [bad](auto& face) { face.profile[2].SetX(bad); });
        building.Refuses(Ruled(1), [bad](auto& face) { face.secondColumn[1].SetZ(bad); });
    }
    const auto asItIs = [](auto&) {};
    building.Refuses(Cylinder(1), [](auto& face) { face.endHeight = 0.0009; });
    building.Refuses(Cylinder(1e-6), asItIs);
    building.Refuses(Revolved(0.0009), asItIs);
    building.Refuses(Revolved(5.3e8), [](auto& face) { face.profile.resize(2); });  // samples
    building.Refuses(Revolved(1), [](auto& face) { face.profile.resize(1); });
    building.Refuses(Revolved(1), [](auto& face) { face.profile.resize(1000000); });
    building.Refuses(Ruled(1), [](auto& face) { face.secondColumn.pop_back(); });
    building.Refuses(SZVLGParamRuledFace{}, asItIs);
    building.Refuses(SZVLGParamRuledFace{{{1, 1, 1}, {2, 2, 2}}, {{3, 3, 3}, {4, 4, 4}}}, asItIs);

    SZVLGZvgGeoRelInclude rel{L"before", {}};  // too short to sample: only the placing is told
    EXPECT_FALSE(building.Relate(Revolved(0.01), rel));
    EXPECT_EQ(rel.key, L"before");
    EXPECT_NEAR(rel.transform.GetAt(0, 0), std::cos(0.5), 1e-12);
    EXPECT_EQ(building.saver.CreateIncludeBlockGeo({}), L"mater_include_key_0");
}

// A cylinder whose points all lie on the cap planes is left out: such faces share the first
// one's geometry whatever theirs is, so only radius, span and height agree.
TEST(ParamFace, SharedGeometryLiesOnTheFace) {
    using Points = std::vector<CZVIMPosition>;
    std::vector<std::pair<SZVLGZvgGeoRelInclude, Points>> placed;  // with the face's own points
    std::mt19937 random(5);
    Building building;
    const auto add = [&](const auto& face, const Points& points) {
        placed.push_back({{}, points});
        ASSERT_TRUE(building.Relate(face, placed.back().first));
    };
    std::uniform_real_distribution<double> number(-1, 1);
    for (int i = 0; i < 300; ++i) {
        const auto vector = [&] {
            return CZVIMVector(number(random), number(random), number(random));
        };
        const CZVIMTransf frame =
            coordinate_transf(CZVIMPosition() + 1e5 * vector(), vector(), vector());
        const double size = 5 + 0.001 * number(random);
        const double start = 10 * number(random);

        SZVLGParamCylinderFace cylinder = Cylinder(size, frame, start);
        cylinder.shell.AddPt(At(frame, size, start, 1));
        add(cylinder, cylinder.shell.GetPoints());

        const SZVLGParamRevolvedFace revolved = Revolved(size, frame, start);
        Points swept;
        for (const CZVIMPosition& point : revolved.profile) {
            for (int k = 0; k <= 7; ++k) {  // 1 radian × 18 / π + 2 steps
                swept.push_back(At(frame, point.GetX(), start + k / 7.0, point.GetZ()));
            }
        }
        add(revolved, swept);

        const SZVLGParamRuledFace ruled = Ruled(size, frame);
        Points rows;
        for (std::size_t row = 0; row < 4; ++row) {
            rows.push_back(ruled.firstColumn[row]);
            rows.push_back(ruled.secondColumn[row]);
        }
        add(ruled, rows);
    }

    building.saver.WriteEnd();
    support::CZVFTReadBufferInStream in(building.buffer.data, building.out.GetPos());
    CZVLGBlockReader reader;
    ASSERT_TRUE(reader.Init(&in));
    EXPECT_LT(reader.GetGeoIdentificationNum(), placed.size() / 2);  // they do share
    for (const auto& [rel, own] : placed) {
        SZVLGZvgGeo geo;
        ASSERT_TRUE(reader.GetGeoByIdentification(rel.key, geo));
        ASSERT_EQ(geo.shells.size(), 1u);
        const Points& points = geo.shells[0].TransformBy(rel.transform).GetPoints();
        ASSERT_EQ(points.size(), own.size());
        for (std::size_t i = 0; i < own.size(); ++i) {
            ASSERT_LE(points[i].DistToPt(own[i]), 0.001 + 1e-8);
        }
    }
}

}  // namespace
