// The geometry model library: literal serial bytes, damaged bytes, and geometry on values.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "ZVIM/Config.h"
#include "ZVIM/Curve.h"
#include "ZVIM/Mesh.h"
#include "ZVIM/Shell.h"
#include "ZVIM/Transf.h"
#include "ZVIM/Visual.h"
#include "support.h"

namespace {

using namespace ZVIM::GeometryPrimitiveResource;
using namespace ZVIM::GeometryModelResource;
using support::Bytes;
using support::Doubles;
using support::Streamed;
using LenientStream = ZVSmartFormat::CZVFTReadBufferInStream;

constexpr double pi = 3.14159265358979323846;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

/// A stream that never delivers fewer bytes than asked for.
class StrictStream : public LenientStream {
  public:
    using LenientStream::LenientStream;
    bool Read(void* buffer, ZVSmartFormat::u64* byteCount) override {
        if (LenientStream::Read(buffer, byteCount)) return true;
        throw ZVSmartFormat::CZVFTStreamException("seek over buffer size");
    }
};

template <class Object>
Bytes Written(const Object& object) {
    return Streamed([&](ZVSmartFormat::CZVFTOutStream& stream) {
        ZVSmartSerial::CZVFTSerialWriter writer(&stream);
        object.WriteSerial(&writer, 1);
    });
}

/// Reads as some version of the future and says how many bytes that took.
template <class Stream = StrictStream, class Object>
std::size_t Read(const Bytes& bytes, Object& object) {
    Stream stream(bytes.data(), bytes.size());
    ZVSmartSerial::CZVFTSerialReader reader(&stream);
    object.ReadSerial(&reader, 7);
    return static_cast<std::size_t>(stream.GetPos());
}

/// `object` holds 1, 2, 3 … as doubles, in the order of the layout. `offsetsOfCounts` are where
/// the counts of its lists stand.
template <class Object>
void ExpectLayout(const Object& object, const std::string& hex,
                  const std::vector<std::size_t>& offsetsOfCounts = {}) {
    SCOPED_TRACE(hex);
    const Bytes bytes = support::FromHex(hex);
    EXPECT_EQ(Written(object), bytes);
    Object copy;
    EXPECT_EQ(Read(bytes, copy), bytes.size());
    EXPECT_EQ(Written(copy), bytes);
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        EXPECT_THROW(Read(support::Slice(bytes, 0, length), copy),
                     ZVSmartFormat::CZVFTStreamException)
            << length;
    }
    for (const std::size_t offset : offsetsOfCounts) {
        Bytes oversized = bytes;
        support::SetU32(oversized, offset, 0xFFFFFFFF);
        // This stream does not throw by itself: the count is refused before it is used.
        EXPECT_THROW(Read<LenientStream>(oversized, copy), ZVSmartFormat::CZVFTStreamException)
            << offset;
    }
}

TEST(GeoModel, SerialBytes) {
    EXPECT_EQ(Doubles({-0.3, 1}),
              "BFD3333333333333"
              "3FF0000000000000");
    const CZVIMPosition p(1, 2, 3), q(4, 5, 6);
    const std::string one = Doubles({1, 2, 3}), both = Doubles({1, 2, 3, 4, 5, 6});
    ExpectLayout(p, one);
    ExpectLayout(CZVIMVector(1, 2, 3), one);
    ExpectLayout(CZVIMLineSegment(p, q), both);
    ExpectLayout(CZVIMCircle(p, CZVIMVector(4, 5, 6), 7), both + Doubles({7}));
    ExpectLayout(CZVIMBoundArc(p, CZVIMVector(4, 5, 6), {7, 8, 9}, {10, 11, 12}, 13),
                 both + Doubles({7, 8, 9, 10, 11, 12, 13}));

    CZVIMTransf transf;
    ExpectLayout(transf, Doubles({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0}));
    transf.SetAt(0, 3, 4);  // the origin's X ends the first row
    transf.SetAt(2, 0, 5);  // the X axis' Z begins the last
    ExpectLayout(transf, Doubles({1, 0, 0, 4, 0, 1, 0, 0, 5, 0, 1, 0}));

    CZVIMPolyline3D chain;
    chain.AddPoint(p);
    chain.AddPoint(q);
    ExpectLayout(chain, "00 00000002" + both, {1});
    chain.SetClosedFlag();
    ExpectLayout(chain, "01 00000002" + both, {1});
    CZVIMPolyline bulged;
    bulged.AddPoint(p, -1);
    bulged.AddPoint(q, 0.5);
    ExpectLayout(bulged, "00 00000002" + Doubles({1, 2, 3, -1, 4, 5, 6, 0.5}), {1});

    CZVIMShell shell;
    shell.AddPts({p, q});
    shell.AddFaceIndex({0, 1, 258});
    shell.AddFaceIndex({-1});
    const std::string shellHex =
        "00000002" + both + "00000006 00000003 00000000 00000001 00000102 00000001 FFFFFFFF";
    ExpectLayout(shell, shellHex, {0, 52});
    CZVIMVisualShell visualShell;
    visualShell.shell = shell;
    visualShell.normals = {{1, 2, 3}};
    visualShell.faceColors = {0x11223344, 0xFF000000};
    ExpectLayout(visualShell, shellHex + "00000001" + one + "00000002 11223344 FF000000",
                 {0, 52, 80, 108});
    CZVIMVisualPolyFaceMesh faces;
    faces.points = {p};
    faces.facesIndex = {1, 0};
    faces.faceColors = {0x11223344};
    faces.edgeVisibles = {1, 0, 255};
    ExpectLayout(
        faces, "00000001" + one + "00000002 00000001 00000000 00000001 11223344 00000003 01 00 FF",
        {0, 28, 40, 48});
    CZVIMMesh mesh;
    mesh.SetRow(2);
    mesh.SetColumn(1);
    mesh.AddPt(p);
    mesh.AddPt(q);
    ExpectLayout(mesh, "00000002 00000001 00000002" + both, {8});
}

TEST(GeoModel, OrderOfPositions) {
    // Each is less than every later one, whichever coordinate tells them apart.
    const std::vector<double> ascending = {-infinite, -1e300, -1e19, -3e-6,    0,  1e-6,
                                           5e18,      1e19,   1e300, infinite, nan};
    for (std::size_t i = 0; i < ascending.size(); ++i) {
        for (std::size_t j = 0; j < ascending.size(); ++j) {
            const double a = ascending[i], b = ascending[j];
            EXPECT_EQ(CZVIMPosition(a, 9, 9) < CZVIMPosition(b, 0, 0), i < j);
            EXPECT_EQ(CZVIMPosition(nan, a, 9) < CZVIMPosition(nan, b, 0), i < j);
            EXPECT_EQ(CZVIMPosition(1, 1, a) < CZVIMPosition(1, 1, b), i < j);
            EXPECT_EQ(CZVIMPosition(1, 1, a) == CZVIMPosition(1, 1, b), i == j);
        }
    }
    const CZVIMPosition exact(0.3, -0.0, 1000), noisy(0.1 + 0.2, 1e-17, 1000 - 1e-10);
    EXPECT_TRUE(exact == noisy && !(exact < noisy) && !(noisy < exact));
    // Equal is transitive: a chain of near points breaks at one place instead of being all equal.
    EXPECT_TRUE(CZVIMPosition(0, 0, 0) == CZVIMPosition(0.4e-6, 0, 0));
    EXPECT_TRUE(CZVIMPosition(0.4e-6, 0, 0) < CZVIMPosition(0.6e-6, 0, 0));

    for (const double refused : {0.0, -1.0, nan, infinite}) CZVIMGeoModelConfig::setabs(refused);
    EXPECT_EQ(CZVIMGeoModelConfig::getabs(), 1e-6);
    CZVIMGeoModelConfig::setabs(0.5);
    EXPECT_TRUE(CZVIMPosition(1, 0, 0) == CZVIMPosition(1.2, 0, 0));
    CZVIMGeoModelConfig::setabs(1e-6);
}

void ExpectNear(const CZVIMVector& a, const CZVIMVector& b, double tolerance = 1e-12) {
    EXPECT_LE((a - b).len(), tolerance) << a.GetX() << ' ' << a.GetY() << ' ' << a.GetZ();
}

TEST(GeoModel, LengthsAndRotations) {
    EXPECT_EQ(CZVIMVector(2, 3, 6).len(), 7);
    EXPECT_DOUBLE_EQ(CZVIMVector(3e200, 4e200, 0).len(), 5e200);
    EXPECT_TRUE(std::isnan(CZVIMVector(0, nan, 0).len()));
    EXPECT_EQ(CZVIMVector(0, -infinite, 0).len(), infinite);
    EXPECT_EQ(CZVIMPosition(1, 1, 1).DistToPt({1, 4, 5}), 5);
    for (const double scale : {1e-320, 1e-200, 1.0, 1e200, 1e308})
        ExpectNear(CZVIMVector(0, scale, scale).normalise(), {0, std::sqrt(0.5), std::sqrt(0.5)});
    EXPECT_EQ(CZVIMVector().normalise(), CZVIMVector());

    ExpectNear(CZVIMVector(1, 0, 5).RotateByAxis(pi / 2, {0, 0, 9}), {0, 1, 5});
    ExpectNear(CZVIMVector(1, 0, 0).RotateByAxis(2 * pi / 3, {1, 1, 1}), {0, 1, 0});
    EXPECT_EQ(CZVIMVector(1, 2, 3).RotateByAxis(1, CZVIMVector()), CZVIMVector(1, 2, 3));

    const CZVIMVector up(0, 0, 3e200), tilted(0, 1e-7, -2), zero;
    EXPECT_TRUE(antiparallel(up, tilted, 1e-7));
    EXPECT_FALSE(antiparallel(up, tilted, 4e-8));
    EXPECT_FALSE(antiparallel(up, -tilted, 1));
    EXPECT_FALSE(antiparallel(up, zero, pi));
    EXPECT_FALSE(antiparallel(up, {nan, 0, 0}, pi));
}

TEST(GeoModel, FramesAndInverses) {
    // X along (0, 1, 0) at (10, 20, 30), Z along x × y = (0, 1, 0) × (-1, 5, 0) = (0, 0, 1).
    const CZVIMTransf frame = coordinate_transf({10, 20, 30}, {0, 4, 0}, {-1, 5, 0});
    CZVIMPosition moved(1, 2, 3);
    EXPECT_TRUE(moved.TransformBy(frame) == CZVIMPosition(8, 21, 33));
    EXPECT_TRUE(moved.TransformBy(frame.inverse()) == CZVIMPosition(1, 2, 3));

    // Directions that nearly coincide still give an orthonormal right-handed frame.
    const CZVIMTransf steep = coordinate_transf({0, 0, 0}, {1, 2, 3}, {1, 2, 3 + 1e-11});
    CZVIMVector axes[3];
    for (int c = 0; c < 3; ++c) axes[c] = {steep.GetAt(0, c), steep.GetAt(1, c), steep.GetAt(2, c)};
    ExpectNear(axes[0].CrossProduct(axes[1]), axes[2]);
    ExpectNear(axes[1].CrossProduct(axes[2]), axes[0]);
    EXPECT_NEAR(axes[1].len(), 1, 1e-12);

    CZVIMTransf shift;
    shift.SetAt(0, 3, 7);
    for (const CZVIMVector& degenerate : {CZVIMVector(), CZVIMVector(-2, 0, 0), {nan, 1, 0}})
        EXPECT_EQ(coordinate_transf({7, 0, 0}, {1, 0, 0}, degenerate), shift);

    // The right operand is applied first, and both orders of an inverse give the identity.
    CZVIMPosition p(1, 0, 0), sameP(1, 0, 0);
    EXPECT_TRUE(p.TransformBy(shift * frame) == sameP.TransformBy(frame).TransformBy(shift));
    CZVIMTransf skewed;
    for (int i = 0; i < 12; ++i) skewed.SetAt(i / 4, i % 4, (i * 7) % 11 * 1e-160);
    for (const CZVIMTransf& product : {skewed * skewed.inverse(), skewed.inverse() * skewed}) {
        for (int i = 0; i < 12; ++i)
            EXPECT_NEAR(product.GetAt(i / 4, i % 4), i % 5 == 0, 1e-9) << i;
    }
    CZVIMTransf singular = frame, broken = frame;
    for (int row = 0; row < 3; ++row) singular.SetAt(row, 2, singular.GetAt(row, 0));
    broken.SetAt(1, 1, nan);
    for (const CZVIMTransf& without : {singular, broken}) EXPECT_TRUE(without.inverse().identity());
    EXPECT_FALSE(shift.identity());
    EXPECT_EQ(Written(CZVIMTransf().inverse()), Written(CZVIMTransf()));
}

TEST(GeoModel, ArcsEndWhereTheyTurnTo) {
    const CZVIMBoundArc arc({1, 1, 5}, {0, 0, -2}, {3, 1, 5}, pi / 2);
    ExpectNear(arc.getEndpt() - CZVIMPosition(1, -1, 5), CZVIMVector());
    EXPECT_EQ(arc.getRadius(), 2);
}

TEST(GeoModel, MeshesGrowByColumnsAndBecomeShells) {
    const auto column = [](int c) {
        return std::vector<CZVIMPosition>{{0, double(c), 0}, {1, double(c), 0}};
    };
    CZVIMMesh mesh;
    for (int c = 0; c < 3; ++c) EXPECT_TRUE(mesh.AddColPts(column(c)));
    EXPECT_FALSE(mesh.AddColPts({{0, 0, 0}}));
    EXPECT_EQ(mesh.GetRow() * 10 + mesh.GetColumn(), 23);
    const std::vector<CZVIMPosition> rowMajor = {{0, 0, 0}, {0, 1, 0}, {0, 2, 0},
                                                 {1, 0, 0}, {1, 1, 0}, {1, 2, 0}};
    EXPECT_EQ(mesh.GetPoints(), rowMajor);
    const CZVIMShell shell = MeshToShell(mesh);
    EXPECT_EQ(shell.GetPoints(), rowMajor);
    EXPECT_EQ(shell.GetFacesIndex(), (std::vector<int>{4, 0, 1, 4, 3, 4, 1, 2, 5, 4}));

    // Sizes announced beforehand end as announced; sizes that do not fit give no faces.
    CZVIMMesh announced;
    announced.SetRow(2);
    announced.SetColumn(2);
    EXPECT_FALSE(announced.AddColPts({{0, 0, 0}}));
    EXPECT_TRUE(announced.AddColPts(column(0)) && announced.AddColPts(column(1)));
    EXPECT_EQ(announced.GetColumn(), 2);
    for (const int size : {-2, 0x10000, std::numeric_limits<int>::max()}) {
        announced.SetRow(size);
        announced.SetColumn(size);
        EXPECT_FALSE(announced.AddColPts(column(2)));
        EXPECT_TRUE(MeshToShell(announced).GetPoints().empty());
    }
}

}  // namespace
