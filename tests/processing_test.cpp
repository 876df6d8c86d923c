// Parametric faces that share their geometries.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "ZVIM/Config.h"
#include "placed_faces.h"

namespace {

using namespace ZVSmartZvg;
using ZVIM::GeometryPrimitiveResource::coordinate_transf;
using ZVIM::GeometryPrimitiveResource::CZVIMGeoModelConfig;

constexpr double pi = 3.14159265358979323846;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

using support::Points;
using support::Relate;
using support::Rows;

/// A saver that writes to memory.
struct Building {
    Building() { saver.Init(&out, {}); }

    /// The number at the end of the face's key, -1 where it is refused.
    template <class Face>
    int KeyNumber(const Face& face) {
        SZVLGZvgGeoRelInclude rel;
        return Relate(saver, face, rel) ? std::stoi(rel.key.substr(18)) : -1;
    }
    /// Expects that `face` is refused after `damage` and leaves `rel` as it was.
    template <class Face, class Damage>
    void Refuses(Face face, Damage damage) {
        SZVLGZvgGeoRelInclude rel{L"before", {}};
        rel.transform.SetAt(1, 3, 77);
        const CZVIMTransf before = rel.transform;
        damage(face);
        EXPECT_FALSE(Relate(saver, face, rel));
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
    EXPECT_TRUE(Relate(building.saver, Ruled(1.0000), rel));
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
    EXPECT_FALSE(Relate(building.saver, Revolved(0.01), rel));
    EXPECT_EQ(rel.key, L"before");
    EXPECT_NEAR(rel.transform.GetAt(0, 0), std::cos(0.5), 1e-12);
    EXPECT_EQ(building.saver.CreateIncludeBlockGeo({}), L"mater_include_key_0");
}

/// Two faces that differ by 0.004 in one point and by 860 in a later one.
template <class Face, class Move>
void DiffersFarBehindANearMiss(const Face& face, Move move) {
    Building building;
    Face other = face;
    move(other);
    EXPECT_EQ(building.KeyNumber(face), 0);
    EXPECT_EQ(building.KeyNumber(other), 1);
    EXPECT_EQ(building.KeyNumber(face), 0);
    EXPECT_EQ(building.KeyNumber(other), 1);
}

TEST(ParamFace, NothingAgreesButByItsNumbers) {
    const double usual = CZVIMGeoModelConfig::getabs();
    CZVIMGeoModelConfig::setabs(0.01);
    DiffersFarBehindANearMiss(Ruled(1), [](auto& face) {
        face.firstColumn[2].SetX(1.004);
        face.secondColumn[3].SetX(862);
    });
    DiffersFarBehindANearMiss(Revolved(5), [](auto& face) {
        face.profile[0].SetX(5.004);
        face.profile[2].SetZ(862);
    });
    const auto withPoints = [](double near, double far) {
        SZVLGParamCylinderFace face = Cylinder(5);
        face.shell.AddPts({{near, 0, 1}, {far, 0, 1}});
        return face;
    };
    DiffersFarBehindANearMiss(withPoints(5, 5), [&](auto& face) { face = withPoints(5.004, 865); });
    CZVIMGeoModelConfig::setabs(usual);

    Building building;  // corners that turning does not bring together
    SZVLGParamRuledFace quad{{{0, 0, 0}, {3, 0, 0}}, {{0, 4, 0}, {3, 4, 0}}};
    EXPECT_EQ(building.KeyNumber(quad), 0);
    for (const CZVIMVector& off :
         {CZVIMVector(0.0025, 0, 0), CZVIMVector(0, 0.003, 0), CZVIMVector(0, 0, 0.005)}) {
        SZVLGParamRuledFace other = quad;
        other.secondColumn[1] = other.secondColumn[1] + off;
        EXPECT_NE(building.KeyNumber(other), 0);
    }
    EXPECT_EQ(building.KeyNumber(quad), 0);
    EXPECT_EQ(building.KeyNumber(Revolved(1)), 4);  // a profile is measured from its own axis
    for (const std::size_t point : {0U, 1U, 2U}) {
        SZVLGParamRevolvedFace other = Revolved(1);
        other.profile[point].SetZ(other.profile[point].GetZ() + 0.0011);
        EXPECT_NE(building.KeyNumber(other), 4);
    }
    EXPECT_EQ(building.KeyNumber(Revolved(1)), 4);
    for (const CZVIMVector& yDirection : {CZVIMVector(-0.0006, 1, 0), CZVIMVector(0, 1, 0.0006)}) {
        SZVLGParamCylinderFace turned =
            Cylinder(5, {}, 0);  // by more than its radius vector may be off
        turned.shell.AddPt(At({}, 5, 1, 1));
        const int number = building.KeyNumber(turned);
        const CZVIMVector xDirection(1, -yDirection.GetX(), 0);
        turned.shell.TransformBy(coordinate_transf({}, xDirection, yDirection));
        EXPECT_GT(building.KeyNumber(turned), number);
    }
}

// Noise takes a point off its cap plane, or onto it: the shells agree as before.
TEST(ParamFace, CapPlanesOffByNoise) {
    const auto raised = [](double by, double aside = 0) {
        SZVLGParamCylinderFace face = Cylinder(1);
        face.shell.AddPt(At({}, 1, 1, by) + CZVIMVector(aside, 0, 0));
        return face;
    };
    Building building;
    EXPECT_EQ(building.KeyNumber(raised(0.0009)), 0);
    EXPECT_EQ(building.KeyNumber(raised(0.0011)), 0);
    EXPECT_EQ(building.KeyNumber(raised(0.0011, 0.002)), 1);
    EXPECT_EQ(building.KeyNumber(raised(0.0009, 0.3)), 0);  // on the planes any will do
    Building other;
    EXPECT_EQ(other.KeyNumber(raised(0.0011)), 0);
    EXPECT_EQ(other.KeyNumber(raised(0.0009, 0.002)), 1);
    EXPECT_EQ(other.KeyNumber(raised(0.0009)), 1);
    EXPECT_EQ(other.KeyNumber(raised(0.0011, 0.002)), 1);
    const auto swept = [](double radius, double span, double aside) {
        SZVLGParamCylinderFace face = Cylinder(radius);
        face.endAngle = face.startAngle + span;
        face.shell.AddPt({aside, 0, 0});
        return face;
    };
    EXPECT_EQ(other.KeyNumber(swept(2.0018, 1.5, 0)), 2);
    EXPECT_EQ(other.KeyNumber(swept(2, 2, 0)), 3);
    EXPECT_EQ(other.KeyNumber(swept(2.00095, 2, 0.3)), 3);  // the order takes it past the last one
}

/// Faces of one saver.
struct PlacedFaces {
    template <class Face>
    void Add(const Face& face, const Points& points) {
        placed.push_back({{}, points});
        ASSERT_TRUE(Relate(building.saver, face, placed.back().first));
    }
    /// Expects `count` geometries, and each face's on its points.
    void Expect(std::size_t count) {
        building.saver.WriteEnd();
        support::CZVFTReadBufferInStream in(building.buffer.data, building.out.GetPos());
        CZVLGBlockReader reader;
        ASSERT_TRUE(reader.Init(&in));
        EXPECT_EQ(reader.GetGeoIdentificationNum(), count);
        EXPECT_EQ(support::WhatIsOff(reader, placed), "");
    }
    Building building;
    std::vector<support::PlacedFace> placed;
};

CZVIMTransf RandomFrame(std::mt19937& random, double reach) {
    std::uniform_real_distribution<double> number(-1, 1);
    const auto vector = [&] { return CZVIMVector(number(random), number(random), number(random)); };
    const CZVIMPosition origin = CZVIMPosition() + reach * vector();
    const CZVIMVector xDirection = vector();
    return coordinate_transf(origin, xDirection, vector());
}

/// The points of a swept face of one radian, eight to each profile point.
Points Swept(const SZVLGParamRevolvedFace& face) {
    CZVIMVector radius = face.radiusVector;
    CZVIMVector ref = face.refVector;
    CZVIMVector axis = face.axis;
    radius.normalise(), ref.normalise(), axis.normalise();
    Points points;
    for (const CZVIMPosition& point : face.profile) {
        for (int k = 0; k <= 7; ++k) {  // 1 radian × 18 / π + 2 steps
            const double angle = face.startAngle + k / 7.0;
            points.push_back(face.center + point.GetX() * std::cos(angle) * radius +
                             point.GetX() * std::sin(angle) * ref + point.GetZ() * axis);
        }
    }
    return points;
}

/// Moves all that places a face by noise: uniform and up to so much in each coordinate, or, where
/// it is 0, what f32 makes of the coordinate.
struct Noise {
    template <class Triple>
    void Move(Triple& value) {
        value = Triple(Moved(value.GetX()), Moved(value.GetY()), Moved(value.GetZ()));
    }
    double Moved(double value) {
        if (most == 0) return static_cast<float>(value);
        return value + most * std::uniform_real_distribution<double>(-1, 1)(random);
    }
    void Move(Points& points) {
        for (CZVIMPosition& point : points) Move(point);
    }
    template <class Face>
    void MoveTurned(Face& face) {
        Move(face.center), Move(face.axis), Move(face.radiusVector), Move(face.refVector);
    }
    double most;
    std::mt19937& random;
};

// Narrow and long ones are among them: what turns their frames moves the far corners by much more
// than the noise. Of many shapes some lie on every border of whatever they are looked for by.
TEST(ParamFace, ShapesAreSharedUnderNoise) {
    for (const int shapes : {12, 300}) {
        for (const double most : {1e-7, 1e-6, 1e-5, 1e-4, 0.0}) {
            SCOPED_TRACE(testing::Message() << shapes << " shapes, noise " << most);
            std::mt19937 random(11);
            Noise noise{most, random};
            PlacedFaces wide, high, caps, cylinders, revolved;
            for (int i = 0; i < 600; ++i) {
                const double width = 0.9 + 1.1 * (i % 3);
                const double height = 0.1 + 0.0371 * (i % shapes / 3);
                const CZVIMTransf frame = RandomFrame(random, 1000);
                const auto corner = [&](double x, double y) {
                    return CZVIMPosition(x, y, 0).TransformBy(frame);
                };
                for (PlacedFaces* const ruled : {&wide, &high}) {
                    SZVLGParamRuledFace face{{corner(0, 0), corner(width, 0)},
                                             {corner(0, height), corner(width, height)}};
                    if (ruled == &high) std::swap(face.firstColumn[1], face.secondColumn[0]);
                    noise.Move(face.firstColumn), noise.Move(face.secondColumn);
                    ruled->Add(face, Rows(face));
                }
                auto cylinder = Turned<SZVLGParamCylinderFace>(frame, height, i);
                cylinder.endHeight = width;
                Points points;
                for (const double along : {0.0, width, width / 3}) {
                    if (along == width / 3) {
                        cylinder.shell.AddPts(points);
                        noise.MoveTurned(cylinder);
                        caps.Add(cylinder, {});
                    }
                    points = {At(frame, height, i, along), At(frame, height, i + 1, along)};
                    noise.Move(points);
                    cylinder.shell.AddPts(points);
                }
                cylinders.Add(cylinder, cylinder.shell.GetPoints());
                auto turned = Turned<SZVLGParamRevolvedFace>(frame, width, i);
                turned.profile = {{width, 0, 0}, {width / 2, 0, height}};
                noise.MoveTurned(turned);
                revolved.Add(turned, Swept(turned));
            }
            for (PlacedFaces* const faces : {&wide, &high, &caps, &cylinders, &revolved}) {
                faces->Expect(static_cast<std::size_t>(shapes));
            }
        }
    }
}

}  // namespace
