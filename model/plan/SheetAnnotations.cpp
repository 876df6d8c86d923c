#include "model/plan/SheetAnnotations.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <string>

#include "model/plan/ClassStyles.h"
#include "model/plan/LabelSpots.h"
#include "model/plan/SvgPath.h"

namespace ZVSmartModel {

namespace {

// Millimetres of paper.
constexpr double bubbleRadius = 3.5;
constexpr double beyondBuilding = 6;  ///< to where an axis ends
static_assert(axisApron > beyondBuilding + 2 * bubbleRadius);
constexpr double lineSpacing = 1.3;  ///< in text sizes
constexpr double tagText = 1.8;
const char* const axisColour = "#b0534a";

/// A straight axis reaches from one side of the box to the other; others stay as they are.
PlanPath Reaching(const PlanPath& path, const PlanExtent& box) {
    if (path.vertices.size() != 2 || path.vertices[0].bulge != 0) return path;
    const PlanPoint& a = path.vertices[0].point;
    const PlanPoint& b = path.vertices[1].point;
    double from = -1e300, to = 1e300;
    const auto clip = [&](double at, double step, double low, double high) {
        if (step == 0) return at >= low && at <= high;
        from = std::max(from, std::min((low - at) / step, (high - at) / step));
        to = std::min(to, std::max((low - at) / step, (high - at) / step));
        return from < to;
    };
    const bool meets =
        clip(a.x, b.x - a.x, box.low.x, box.high.x) && clip(a.y, b.y - a.y, box.low.y, box.high.y);
    if (!meets || (a.x == b.x && a.y == b.y)) return path;
    const auto at = [&](double part) {
        return PlanPoint{a.x + part * (b.x - a.x), a.y + part * (b.y - a.y)};
    };
    return {{{at(from)}, {at(to)}}, false};
}

class Annotator {
  public:
    Annotator(const SheetLayout& layout, const SheetFrame& frame, Canvas& canvas)
        : layout(layout), frame(frame), canvas(canvas) {}

    double Metres(double millimetres) const { return millimetres / frame.unitsPerMetre; }

    PlanExtent Widened(double millimetres) const {
        const double by = Metres(millimetres);
        const PlanExtent& box = layout.extent;
        return {{box.low.x - by, box.low.y - by}, {box.high.x + by, box.high.y + by}};
    }

    void DrawBubble(const std::string& tag, const PlanPoint& end, const PlanPoint& from) const {
        const double length = std::hypot(end.x - from.x, end.y - from.y);
        if (!(length > 0)) return;
        const double radius = Metres(bubbleRadius);
        const PlanPoint middle = {end.x + (end.x - from.x) / length * radius,
                                  end.y + (end.y - from.y) / length * radius};
        canvas.Draw(
            {{{{{middle.x - radius, middle.y}, 1}, {{middle.x + radius, middle.y}, 1}}, true}},
            {"#ffffff", axisColour, 0.18});
        const double size = std::min(3.0, 2 * bubbleRadius * 2.4 / WidthOf(tag + "...", 3));
        canvas.Write({tag,
                      {middle.x, middle.y - Metres(size * 0.36)},
                      size,
                      TextAnchor::Middle,
                      0,
                      false,
                      axisColour,
                      "plan-axis"});
    }

    bool WriteRoom(const PlanLabel& label, TakenBoxes& taken) const {
        double widest = 1;
        for (const std::string& line : label.lines) widest = std::max(widest, WidthOf(line, 1));
        const double high = lineSpacing * static_cast<double>(label.lines.size());
        const std::optional<PlanPoint> spot =
            InnermostPoint(label.room, std::clamp(widest / high, 0.5, 4.0));
        if (!spot) return false;
        for (std::size_t count = label.lines.size(); count > 0; --count) {
            for (const double size : {2.6, 2.2, 1.8, 1.5}) {
                if (WriteLines(label, *spot, count, size, taken)) return true;
            }
        }
        return false;
    }

    bool WriteTag(const PlanLabel& label, TakenBoxes& taken) const {
        if (!IsOnSheet(label.at)) return true;
        const double aside = 2.5;  // text sizes
        constexpr double ways[][2] = {{0, 0}, {0, 1}, {0, -1}, {1, 0}, {-1, 0}, {1, 1}, {-1, -1}};
        for (const auto& [x, y] : ways) {
            const double step = Metres(aside * tagText);
            const PlanPoint spot = {label.at.x + x * 1.6 * step, label.at.y + y * step};
            if (WriteLines(label, spot, 1, tagText, taken)) return true;
        }
        return false;
    }

  private:
    bool IsOnSheet(const PlanPoint& point) const {
        const PlanExtent& box = layout.extent;
        return point.x >= box.low.x && point.x <= box.high.x && point.y >= box.low.y &&
               point.y <= box.high.y;
    }

    /// The first `count` lines in the middle of the spot, if there is room.
    bool WriteLines(const PlanLabel& label, const PlanPoint& spot, std::size_t count, double size,
                    TakenBoxes& taken) const {
        double wide = 0;
        for (std::size_t i = 0; i < count; ++i)
            wide = std::max(wide, WidthOf(label.lines[i], size));
        const double high = size * lineSpacing * static_cast<double>(count);
        const double x = Metres(wide / 2), y = Metres(high / 2);
        const PlanExtent box = {{spot.x - x, spot.y - y}, {spot.x + x, spot.y + y}};
        if (!label.room.empty() && !HoldsBox(label.room, box)) return false;
        if (!taken.Take(box)) return false;
        for (std::size_t i = 0; i < count; ++i) {
            const double down = Metres(size * (1 + lineSpacing * static_cast<double>(i)));
            const bool isRoom = !label.room.empty();
            canvas.Write({label.lines[i],
                          {spot.x, spot.y + y - down},
                          size,
                          TextAnchor::Middle,
                          0,
                          isRoom && i == 0,
                          inkColour,
                          isRoom ? "plan-room" : "plan-tag"});
        }
        return true;
    }

    const SheetLayout& layout;
    const SheetFrame& frame;
    Canvas& canvas;
};

}  // namespace

double WidthOf(const std::string& text, double size) {
    double ems = 0;
    for (const char byte : text) {
        const auto code = static_cast<unsigned char>(byte);
        if (code < 0x80) ems += 0.62;
        if (code >= 0xC0 && code < 0xE3) ems += 0.62;
        if (code >= 0xE3) ems += 1;
    }
    return ems * size;
}

void DrawAxes(const std::vector<PlanAxis>& axes, const SheetLayout& layout, const SheetFrame& frame,
              Canvas& canvas) {
    if (axes.empty()) return;
    const Annotator annotator(layout, frame, canvas);
    canvas.BeginLayer({"", {"plan-axes"}, "", "", ""}, {"none", axisColour, 0.13, true});
    const PlanExtent box = annotator.Widened(beyondBuilding);
    for (const PlanAxis& axis : axes) {
        const PlanPath path = Reaching(axis.path, box);
        if (path.vertices.size() < 2) continue;
        canvas.Draw({path});
        if (path.closed) continue;
        const std::size_t last = path.vertices.size() - 1;
        annotator.DrawBubble(axis.tag, path.vertices[0].point, path.vertices[1].point);
        annotator.DrawBubble(axis.tag, path.vertices[last].point, path.vertices[last - 1].point);
    }
    canvas.EndLayer();
}

std::size_t WriteLabels(const PlanFloor& floor, const SheetLayout& layout, const SheetFrame& frame,
                        Canvas& canvas) {
    const Annotator annotator(layout, frame, canvas);
    TakenBoxes taken;
    std::size_t homeless = 0;
    canvas.BeginLayer({"", {"plan-labels"}, "", "", ""}, {});
    for (const bool isRoom : {true, false}) {
        for (const PlanLabel& label : floor.labels) {
            if (label.lines.empty() || label.room.empty() == isRoom) continue;
            const bool stands =
                isRoom ? annotator.WriteRoom(label, taken) : annotator.WriteTag(label, taken);
            homeless += !stands;
        }
    }
    canvas.EndLayer();
    return homeless;
}

}  // namespace ZVSmartModel
