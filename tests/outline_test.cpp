// Plan outlines.

#include <gtest/gtest.h>

#include <cmath>
#include <ctime>
#include <limits>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <utility>

#include "ZVIM/Config.h"
#include "support.h"

namespace {

using namespace ZVSmartZvg;
using ZVIM::GeometryPrimitiveResource::CZVIMGeoModelConfig;

constexpr double pi = 3.14159265358979323846;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

/// A to D are the corners of a rectangle, a and b lie beside two by rounding noise, e farther.
CZVIMPosition Corner(char letter) {
    static const std::map<char, CZVIMPosition> corners = {
        {'A', {0, 0, 7}},           {'a', {4e-8, -4e-8, 3}}, {'B', {9, 0, 7}},
        {'b', {9 - 4e-8, 4e-8, 3}}, {'C', {9, 5, 7}},        {'D', {0, 5, 7}},
        {'e', {1e-5, 0, 7}},        {'N', {0, nan, 7}},      {'I', {-infinite, 0, 7}}};
    return corners.at(letter);
}

/// The vertices as corners, each with its bulge.
std::string TextOf(const CZVIMPolyline& outline) {
    std::ostringstream text;
    for (unsigned int i = 0; i < outline.CountOfPoint(); ++i) {
        CZVIMPosition point = outline.GetPointAt(i);
        EXPECT_EQ(point.GetZ(), 0.0);
        point.SetZ(7);
        for (const char letter : {'A', 'B', 'C', 'D'}) {
            if (point.DistToPt(Corner(letter)) < 1e-6) text << letter;
        }
        text << outline.GetBulgeAt(i) << ' ';
    }
    return text.str();
}

TEST(Outline, OfPolylinesAndChains) {
    struct Case {
        const char *name, *polyline, *segments;  // "*" ends a closed polyline
        const char* arcs;                        // sign of the normal, ends, tan(subtend / 4)
        bool found;
        const char* outline;
    };
    // clang-format off
    const Case cases[] = {
        {"nothing", "", "", "", false, "D9 "},
        {"closed keeps a repeated point", "ABCA*", "", "", true, "A0 B0 C0 A0 "},
        {"ends meet", "ABCa", "", "", true, "A0 B0 C0 "},
        {"ends apart", "ABCe", "", "", false, "D9 "},
        {"two points", "AB*", "", "", false, "D9 "},
        {"three points", "ABC*", "", "", true, "A0 B0 C0 "},
        {"not finite", "ABCN", "", "", false, "D9 "},
        {"not finite, closed", "ABI*", "", "", false, "D9 "},
        {"polyline fails, chain closes", "ABCN", "BC AB CA", "", true, "A0 B0 C0 "},
        {"rectangle", "", "CD DA AB BC", "", true, "A0 B0 C0 D0 "},
        {"one edge backwards", "", "AB CB CD DA", "", true, "A0 B0 C0 D0 "},
        {"a turned edge loses its bulge", "", "", "+AB-1 +AC0.2 +CB0.3", true, "A0.2 C0.3 B0 "},
        {"and negates the one it displaces", "", "", "+BC0.2 +AB-1 +AC0.3 +CB-1", true, "A0.3 C-1 B-0.2 "},
        {"so with a half circle", "", "CB", "+BC-1 +AB0.2 +AC0.3", true, "A0.3 C0 B1 "},
        {"half circle", "", "BA", "+AB1", true, "A1 B0 "},
        {"half circle seen from below", "", "BA", "-AB1", true, "A-1 B0 "},
        {"tail into a loop", "", "AB BC CD DB", "", false, "A0 B0 C0 D0 "},
        {"gap", "", "AB BC CD", "", false, ""},
        {"there and back", "", "AB BA", "", true, "A0 B0 "},
        {"edge to itself", "", "AA", "", false, ""},
        {"rounding noise", "", "Ab BC Ca", "", true, "A0 B0 C0 "},
        {"hostile ends", "", "AB BI IA", "", false, "D9 "},
        {"hostile angle", "", "AB", "+BAnan", false, "D9 "},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        SZVLGZvgGeo geo;
        geo.polylines.emplace_back();
        for (const char letter : std::string(c.polyline)) {
            if (letter == '*') geo.polylines[0].SetClosedFlag();
            if (letter != '*') geo.polylines[0].AddPoint(Corner(letter));
        }
        std::string edge;
        for (std::istringstream edges(c.segments); edges >> edge;) {
            geo.lineSegments.push_back({Corner(edge[0]), Corner(edge[1])});
        }
        for (std::istringstream edges(c.arcs); edges >> edge;) {
            const double subtend = 4 * std::atan(std::stod(edge.substr(3)));
            const CZVIMVector normal(0, 0, edge[0] == '+' ? 1 : -1);
            geo.boundArcs.push_back({{}, normal, Corner(edge[1]), Corner(edge[2]), subtend});
        }
        for (const bool reached : {true, true, false}) {  // the record, its parent, one above
            CZVIMPolyline outline;
            outline.AddPoint({0, 5, 0}, 9);
            const bool found = CZVLGBlockInfoDeal::GetOneCloseXOYPolyInZvgGeo(geo, outline);
            EXPECT_EQ(found, reached && c.found);
            EXPECT_EQ(outline.GetClosedFlag(), found);
            EXPECT_EQ(TextOf(outline), reached ? c.outline : "D9 ");
            SZVLGZvgSubGeo child;
            child.attr.transf.SetAt(0, 3, 100);  // not applied
            std::swap(child.geo, geo);
            geo.subGeos.push_back(child);
        }
    }
}

/// Four-sided loops anywhere within `reach`, each edge ending where `joint` moves the start of the
/// next: how many of them close with four vertices.
template <class Joint>
int ClosedLoops(double reach, double size, Joint joint) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> number(-1, 1);
    int closed = 0;
    for (int i = 0; i < 20000; ++i) {
        const double x = reach * number(random);
        const double y = reach * number(random);
        SZVLGZvgGeo geo;
        const auto corner = [&, turn = number(random)](int k) {
            const double angle = turn + k * pi / 2;
            return CZVIMPosition(x + size * std::cos(angle), y + 2 * size * std::sin(angle), k);
        };
        for (int k = 0; k < 4; ++k) {
            geo.lineSegments.push_back({corner(k), joint(corner((k + 1) % 4), number, random)});
        }
        CZVIMPolyline outline;
        if (!CZVLGBlockInfoDeal::GetOneCloseXOYPolyInZvgGeo(geo, outline)) continue;
        closed += outline.CountOfPoint() == 4 ? 1 : 0;
    }
    return closed;
}

TEST(Outline, EndsMeetWithinTheToleranceWhereverTheyAre) {
    const auto apart = [](double length) {
        return [length](const CZVIMPosition& point, auto& number, auto& random) {
            const double angle = pi * number(random);
            return point + CZVIMVector(length * std::cos(angle), length * std::sin(angle), 9);
        };
    };
    const auto oneUnitOff = [](const CZVIMPosition& point, auto& number, auto& random) {
        const auto off = [&](double value) { return std::nextafter(value, 1e99 * number(random)); };
        return CZVIMPosition(off(point.GetX()), off(point.GetY()), 0);
    };
    EXPECT_EQ(ClosedLoops(100, 3, apart(1e-6)), 20000);
    EXPECT_EQ(ClosedLoops(1e5, 3, apart(3e-7)), 20000);
    EXPECT_EQ(ClosedLoops(1e10, 100, oneUnitOff), 20000);
    EXPECT_EQ(ClosedLoops(4e9, 100, oneUnitOff), 20000);
    EXPECT_EQ(ClosedLoops(1e307, 1e299, oneUnitOff), 20000);
    EXPECT_EQ(ClosedLoops(100, 3e-6, apart(1e-7)), 20000);  // near, but not coincident corners
    EXPECT_EQ(ClosedLoops(100, 3, apart(1.01e-6)), 0);
    EXPECT_EQ(ClosedLoops(1e10, 100, apart(1e-4)), 0);
    const double usual = CZVIMGeoModelConfig::getabs();
    CZVIMGeoModelConfig::setabs(0.01);
    EXPECT_EQ(ClosedLoops(100, 3, apart(0.0099)), 20000);
    EXPECT_EQ(ClosedLoops(100, 3, apart(0.0101)), 0);
    CZVIMGeoModelConfig::setabs(usual);
}

// On a circle, on one line, in one cell of any grid that the far point made coarse.
TEST(Outline, ManyEdgesInAnyOrder) {
    constexpr int count = 100000;
    for (const int shape : {0, 1, 2}) {
        SCOPED_TRACE(shape);
        SZVLGZvgGeo geo;
        for (int i = 0; i < count; ++i) {
            const int step = static_cast<int>(i * 61813LL % count);
            const auto at = [shape](int k) {
                const double angle = 2 * pi * (k % count) / count;
                if (shape == 1) return CZVIMPosition(5, k % count, 0);
                return CZVIMPosition(1e5 * std::cos(angle), 1e5 * std::sin(angle), 0);
            };
            geo.lineSegments.push_back({at(step), at(step + 1)});
        }
        if (shape == 2) geo.lineSegments.push_back({{1e300, 1e300, 0}, {1e300, 0, 0}});
        CZVIMPolyline outline;
        const std::clock_t before = std::clock();  // other programs' time is not ours
        EXPECT_TRUE(CZVLGBlockInfoDeal::GetOneCloseXOYPolyInZvgGeo(geo, outline));
        EXPECT_LT(std::clock() - before, 5 * CLOCKS_PER_SEC);
        EXPECT_EQ(outline.CountOfPoint(), static_cast<unsigned int>(count));
    }
}

}  // namespace
