#include "model/plan/PlanDimensions.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <numbers>
#include <string>

#include "model/plan/ClassStyles.h"
#include "model/plan/SheetAnnotations.h"
#include "model/plan/SvgPath.h"

namespace ZVSmartModel {

namespace {

// Millimetres of paper.
constexpr double dimensionRow = 7;  ///< from one line of dimensions to the next
constexpr double dimensionText = 2.2;
constexpr double tick = 0.9;

constexpr double sameDirection = 0.01;  // radians

PlanPoint Turned(const PlanPoint& point, double angle) {
    const double c = std::cos(angle), s = std::sin(angle);
    return {c * point.x - s * point.y, s * point.x + c * point.y};
}

std::vector<const PlanComponent*> CutWalls(const PlanFloor& floor) {
    std::vector<const PlanComponent*> walls;
    for (const PlanComponent& component : floor.components) {
        const bool isWall = StyleOfClass(component.className).kind == ClassKind::Wall;
        if (isWall && component.drawnAs == DrawnAs::Section) walls.push_back(&component);
    }
    return walls;
}

/// The outlines' edges, from end to end.
std::vector<std::complex<double>> EdgesOf(const std::vector<const PlanComponent*>& walls) {
    std::vector<std::complex<double>> edges;
    for (const PlanComponent* wall : walls) {
        for (const PlanArea& area : wall->areas) {
            for (const PlanPath& path : area) {
                for (std::size_t i = 0; i < path.vertices.size(); ++i) {
                    const PlanPoint& a = path.vertices[i].point;
                    const PlanPoint& b = path.vertices[(i + 1) % path.vertices.size()].point;
                    edges.emplace_back(b.x - a.x, b.y - a.y);
                }
            }
        }
    }
    return edges;
}

/// The direction that most of the edges' length has, quarter turns aside; none where that is less
/// than seven tenths.
std::optional<double> MainDirection(const std::vector<std::complex<double>>& edges) {
    // Four times an angle does not know quarter turns.
    std::complex<double> sum = 0;
    for (const auto& edge : edges) {
        if (std::abs(edge) > 0) sum += std::polar(std::abs(edge), 4 * std::arg(edge));
    }
    double angle = std::arg(sum) / 4;
    if (std::fabs(angle) < sameDirection / 10) angle = 0;
    double along = 0, all = 0;
    for (const auto& edge : edges) {
        const double turn = std::arg(edge) - angle;
        const double off = std::fabs(std::remainder(turn, std::numbers::pi / 2));
        all += std::abs(edge);
        if (off <= sameDirection) along += std::abs(edge);
    }
    return all > 0 && along >= 0.7 * all ? std::optional(angle) : std::nullopt;
}

/// A straight axis along one direction of a box; where, and whether along its Y.
struct StraightAxis {
    double at;
    bool isAlongY;
};

std::optional<StraightAxis> StraightAxisAlong(double angle, const PlanAxis& axis) {
    if (axis.path.vertices.size() != 2 || axis.path.vertices[0].bulge != 0) return std::nullopt;
    const PlanPoint a = Turned(axis.path.vertices[0].point, -angle);
    const PlanPoint b = Turned(axis.path.vertices[1].point, -angle);
    const double slack = 1e-3 * std::hypot(b.x - a.x, b.y - a.y);
    if (std::fabs(b.x - a.x) < slack) return StraightAxis{a.x, true};
    if (std::fabs(b.y - a.y) < slack) return StraightAxis{a.y, false};
    return std::nullopt;
}

/// Draws rows of dimensions below and right of a box.
class DimensionRows {
  public:
    DimensionRows(const WallBox& around, const SheetFrame& frame, Canvas& canvas)
        : around(around), frame(frame), canvas(canvas) {}

    /// Distances between neighbours of `stops`, `offset` millimetres outside the box.
    void Draw(std::vector<double> stops, double offset, bool isAlongX) const {
        constexpr double near = 0.005;  // metres: the same
        std::sort(stops.begin(), stops.end());
        stops.erase(std::unique(stops.begin(), stops.end(),
                                [](double a, double b) { return b - a < near; }),
                    stops.end());
        if (stops.size() < 2) return;
        const double line =
            isAlongX ? around.extent.low.y - Metres(offset) : around.extent.high.x + Metres(offset);
        // Along the row, and to its left.
        const auto at = [&](double along, double left) {
            return around.InModel(isAlongX ? PlanPoint{along, line + left}
                                           : PlanPoint{line - left, along});
        };
        const double t = Metres(tick);
        std::vector<PlanPath> lines = {{{{at(stops.front(), 0)}, {at(stops.back(), 0)}}, false}};
        for (const double stop : stops) {
            lines.push_back({{{at(stop, -2 * t)}, {at(stop, 2 * t)}}, false});
            lines.push_back({{{at(stop - t, -t)}, {at(stop + t, t)}}, false});
        }
        canvas.Draw(lines);
        const double angle = around.angle + (isAlongX ? 0 : std::numbers::pi / 2);
        for (std::size_t i = 0; i + 1 < stops.size(); ++i) {
            const double length = stops[i + 1] - stops[i];
            const std::string text = SvgNumber(std::round(length * 1000) / 1000);
            if (WidthOf(text, dimensionText) > length * frame.unitsPerMetre) continue;
            canvas.Write({text, at((stops[i] + stops[i + 1]) / 2, Metres(0.7)), dimensionText,
                          TextAnchor::Middle, angle, false, inkColour, "plan-dimension"});
        }
    }

  private:
    double Metres(double millimetres) const { return millimetres / frame.unitsPerMetre; }

    const WallBox& around;
    const SheetFrame& frame;
    Canvas& canvas;
};

}  // namespace

PlanPoint WallBox::InModel(const PlanPoint& point) const {
    return Turned(point, angle);
}

std::optional<WallBox> WallBoxOf(const PlanFloor& floor) {
    const std::vector<const PlanComponent*> walls = CutWalls(floor);
    const std::optional<double> angle = MainDirection(EdgesOf(walls));
    if (!angle) return std::nullopt;
    WallBox box;
    box.angle = *angle;
    for (const PlanComponent* wall : walls) {
        PlanShapes shapes;
        shapes.areas = wall->areas;
        for (PlanArea& area : shapes.areas) {
            for (PlanPath& path : area) {
                for (PlanVertex& vertex : path.vertices)
                    vertex.point = Turned(vertex.point, -box.angle);
            }
        }
        box.extent.Add(ExtentOf(shapes));
    }
    return box;
}

SheetApron ApronOf(const PlanDrawing& drawing) {
    bool hasWalls = false, isTurned = false;
    for (const PlanFloor& floor : drawing.floors) {
        const std::optional<WallBox> walls = WallBoxOf(floor);
        hasWalls = hasWalls || walls;
        isTurned = isTurned || (walls && walls->angle != 0);
    }
    SheetApron apron;
    const bool hasAxes = !drawing.axes.empty();
    if (hasAxes) apron = {axisApron, axisApron, axisApron, axisApron};
    const double rows = (hasWalls ? dimensionRow : 0) + (hasAxes ? dimensionRow : 0);
    apron.right += rows;
    apron.bottom += rows;
    if (isTurned) {
        apron.left += rows;
        apron.top += rows;
    }
    return apron;
}

void DrawDimensions(const PlanFloor& floor, const std::vector<PlanAxis>& axes,
                    const SheetLayout& layout, const SheetFrame& frame, Canvas& canvas) {
    const std::optional<WallBox> walls = WallBoxOf(floor);
    WallBox around = {0, layout.extent};
    if (walls && walls->angle != 0) around = *walls;
    std::vector<double> alongX, alongY;
    for (const PlanAxis& axis : axes) {
        const std::optional<StraightAxis> straight = StraightAxisAlong(around.angle, axis);
        if (straight) (straight->isAlongY ? alongX : alongY).push_back(straight->at);
    }
    canvas.BeginLayer({"", {"plan-dimensions"}, "", "", ""}, {"none", inkColour, 0.13});
    const DimensionRows rows(around, frame, canvas);
    double offset = dimensionRow * 0.6 + (axes.empty() ? 0 : axisApron);
    rows.Draw(alongX, offset, true);
    rows.Draw(alongY, offset, false);
    if (!axes.empty()) offset += dimensionRow;
    if (walls) {
        rows.Draw({walls->extent.low.x, walls->extent.high.x}, offset, true);
        rows.Draw({walls->extent.low.y, walls->extent.high.y}, offset, false);
    }
    canvas.EndLayer();
}

}  // namespace ZVSmartModel
