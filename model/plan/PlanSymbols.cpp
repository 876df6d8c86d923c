#include "model/plan/PlanSymbols.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace ZVSmartModel {

using ZVIM::GeometryPrimitiveResource::CZVIMTransf;

namespace {

constexpr double leafThickness = 0.04;           // metres
constexpr double quarter = 0.41421356237309503;  // bulge: the tangent of 22.5 degrees

PlanPoint Plus(const PlanPoint& a, const PlanPoint& b, double times) {
    return {a.x + times * b.x, a.y + times * b.y};
}

double Dot(const PlanPoint& a, const PlanPoint& b) {
    return a.x * b.x + a.y * b.y;
}

/// Of length 1; the zero vector stays.
PlanPoint Normalised(const PlanPoint& vector) {
    const double length = std::hypot(vector.x, vector.y);
    return length > 0 ? PlanPoint{vector.x / length, vector.y / length} : vector;
}

/// An opening in a wall: along it from 0 to `width`, across it from 0 to `depth`.
struct Opening {
    PlanPoint corner, along, across;
    double width, depth;
    double turn;  ///< 1 where `across` is left of `along`, else -1

    PlanPoint At(double u, double v) const { return Plus(Plus(corner, along, u), across, v); }
};

std::optional<Opening> OpeningOf(const PlanShapes& section, const CZVIMTransf& placement) {
    const PlanPoint along = Normalised({placement.GetAt(0, 0), placement.GetAt(1, 0)});
    const PlanPoint across = Normalised({placement.GetAt(0, 1), placement.GetAt(1, 1)});
    const double turn = along.x * across.y - along.y * across.x;
    if (!(std::fabs(turn) > 0.99)) return std::nullopt;
    double low[2] = {1e300, 1e300}, high[2] = {-1e300, -1e300};
    const auto add = [&](const std::vector<PlanPath>& paths) {
        for (const PlanPath& path : paths) {
            for (const PlanVertex& vertex : path.vertices) {
                const double at[2] = {Dot(vertex.point, along), Dot(vertex.point, across)};
                for (int i = 0; i < 2; ++i) {
                    low[i] = std::min(low[i], at[i]);
                    high[i] = std::max(high[i], at[i]);
                }
            }
        }
    };
    for (const PlanArea& area : section.areas) add(area);
    add(section.lines);
    const double width = high[0] - low[0], depth = high[1] - low[1];
    if (!(width > depth) || !(width > 0.3)) return std::nullopt;
    const PlanPoint corner = Plus(Plus({0, 0}, along, low[0]), across, low[1]);
    return Opening{corner, along, across, width, depth, turn > 0 ? 1.0 : -1.0};
}

/// A leaf that stands open, and the way of its end to where it closes. `sense` is 1 where the
/// hinge is where `along` begins, -1 where it ends; `side` 1 where it swings across.
void AddSwing(PlanShapes& shapes, const Opening& opening, double hinge, double length, int sense,
              int side) {
    const double face = side > 0 ? opening.depth : 0;
    const double thick = std::min(leafThickness, length / 4) * sense;
    const double tip = face + side * length;
    shapes.areas.push_back({{{{opening.At(hinge, face)},
                              {opening.At(hinge + thick, face)},
                              {opening.At(hinge + thick, tip)},
                              {opening.At(hinge, tip)}},
                             true}});
    const double bulge = quarter * sense * side * opening.turn;
    shapes.lines.push_back(
        {{{opening.At(hinge + sense * length, face), bulge}, {opening.At(hinge, tip), 0}}, false});
}

void AddSliding(PlanShapes& shapes, const Opening& opening, double from, double length) {
    const double middle = opening.depth / 2, half = std::min(leafThickness, opening.depth / 2) / 2;
    shapes.areas.push_back({{{{opening.At(from, middle - half)},
                              {opening.At(from + length, middle - half)},
                              {opening.At(from + length, middle + half)},
                              {opening.At(from, middle + half)}},
                             true}});
}

struct Tread {
    double area = 0;
    PlanPoint middle;  ///< times `area`
    std::vector<PlanPoint> corners;

    PlanPoint Middle() const { return {middle.x / area, middle.y / area}; }
};

/// How far the tread reaches from its middle in a direction.
double ReachOf(const Tread& tread, const PlanPoint& direction) {
    const double middle = Dot(tread.Middle(), direction);
    double reach = 0;
    for (const PlanPoint& corner : tread.corners) {
        reach = std::max(reach, Dot(corner, direction) - middle);
    }
    return reach;
}

PlanPath BreakLine(const PlanPoint& end, const PlanPoint& along, double half) {
    const PlanPoint across = {-along.y, along.x};
    const auto at = [&](double u, double v) { return Plus(Plus(end, across, u), along, v); };
    return {{{at(-half * 1.1, -0.12)},
             {at(-0.06, 0)},
             {at(-0.06, 0.12)},
             {at(0.06, -0.12)},
             {at(0.06, 0)},
             {at(half * 1.1, 0.12)}},
            false};
}

/// False where the operation says nothing that is drawn.
bool AddLeaves(PlanShapes& shapes, const Opening& opening, const std::string& operation) {
    const auto has = [&](const char* word) { return operation.find(word) != std::string::npos; };
    const double width = opening.width;
    if (has("SLIDING") && !has("FOLDING")) {
        const bool isDouble = has("DOUBLE");
        AddSliding(shapes, opening, has("RIGHT") && !isDouble ? width / 2 : 0, width / 2);
        if (isDouble) AddSliding(shapes, opening, width / 2, width / 2);
        return true;
    }
    if (has("DOUBLE_DOOR") && has("SWING")) {
        AddSwing(shapes, opening, 0, width / 2, 1, 1);
        AddSwing(shapes, opening, width, width / 2, -1, has("OPPOSITE") ? -1 : 1);
        return true;
    }
    const bool isLeft = has("LEFT");
    if (!has("SWING") || !(isLeft || has("RIGHT"))) return false;
    const double hinge = isLeft ? 0 : width;
    AddSwing(shapes, opening, hinge, width, isLeft ? 1 : -1, 1);
    if (has("DOUBLE_SWING")) AddSwing(shapes, opening, hinge, width, isLeft ? 1 : -1, -1);
    return true;
}

}  // namespace

std::optional<PlanShapes> DoorSymbol(const PlanShapes& section, const CZVIMTransf& placement,
                                     const std::string& operation) {
    const std::optional<Opening> opening = OpeningOf(section, placement);
    if (!opening) return std::nullopt;
    PlanShapes shapes;
    if (!AddLeaves(shapes, *opening, operation)) return std::nullopt;
    const double width = opening->width;
    shapes.lines.push_back({{{opening->At(0, 0)},
                             {opening->At(width, 0)},
                             {opening->At(width, opening->depth)},
                             {opening->At(0, opening->depth)}},
                            true});
    return shapes;
}

std::vector<PlanPath> StairMarks(const std::vector<LevelFace>& levels, bool goesOn) {
    std::map<long long, Tread> treads;  // by height in centimetres
    for (const LevelFace& level : levels) {
        Tread& tread = treads[std::llround(level.height * 100)];
        tread.area += level.area;
        tread.middle = Plus(tread.middle, level.middle, level.area);
        tread.corners.insert(tread.corners.end(), level.corners.begin(), level.corners.end());
    }
    if (treads.size() < 3) return {};
    PlanPath way;
    for (const auto& [height, tread] : treads) way.vertices.push_back({tread.Middle()});
    const PlanPoint last = way.vertices.back().point;
    const PlanPoint before = way.vertices[way.vertices.size() - 2].point;
    const PlanPoint along = Normalised({last.x - before.x, last.y - before.y});
    const PlanPoint across = {-along.y, along.x};
    const auto barb = [&](double side) {
        return PlanVertex{Plus(Plus(last, along, -0.2), across, 0.1 * side)};
    };
    std::vector<PlanPath> marks = {way, {{barb(1), {last}, barb(-1)}, false}};
    if (goesOn) {
        const Tread& tread = treads.rbegin()->second;
        const double half =
            std::max(ReachOf(tread, across), ReachOf(tread, {-across.x, -across.y}));
        marks.push_back(BreakLine(Plus(last, along, ReachOf(tread, along)), along, half));
    }
    return marks;
}

}  // namespace ZVSmartModel
