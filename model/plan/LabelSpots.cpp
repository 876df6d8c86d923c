#include "model/plan/LabelSpots.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <queue>

#include "model/plan/Arc.h"

namespace ZVSmartModel {

namespace {

struct Side {
    PlanPoint from, to;
};

std::vector<Side> SidesOf(const PlanArea& area, double stretch = 1) {
    constexpr int chords = 8;
    std::vector<Side> sides;
    const auto add = [&](const PlanPoint& from, const PlanPoint& to) {
        sides.push_back({{from.x, from.y * stretch}, {to.x, to.y * stretch}});
    };
    for (const PlanPath& path : area) {
        for (std::size_t i = 0; i < path.vertices.size(); ++i) {
            const PlanVertex& from = path.vertices[i];
            const PlanPoint& to = path.vertices[(i + 1) % path.vertices.size()].point;
            PlanPoint last = from.point;
            if (IsArc(from.point, to, from.bulge)) {
                for (int chord = 1; chord < chords; ++chord) {
                    const double fraction = static_cast<double>(chord) / chords;
                    const PlanPoint next = ArcPoint(from.point, to, from.bulge, fraction);
                    add(last, next);
                    last = next;
                }
            }
            add(last, to);
        }
    }
    return sides;
}

bool IsInside(const std::vector<Side>& sides, const PlanPoint& point) {
    bool inside = false;
    for (const auto& [a, b] : sides) {
        if ((a.y > point.y) == (b.y > point.y)) continue;
        inside ^= point.x < a.x + (point.y - a.y) / (b.y - a.y) * (b.x - a.x);
    }
    return inside;
}

double Distance(const Side& side, const PlanPoint& point) {
    const double x = side.to.x - side.from.x, y = side.to.y - side.from.y;
    const double length = x * x + y * y;
    const double along =
        length > 0 ? ((point.x - side.from.x) * x + (point.y - side.from.y) * y) / length : 0;
    const double part = std::clamp(along, 0.0, 1.0);
    return std::hypot(side.from.x + part * x - point.x, side.from.y + part * y - point.y);
}

/// Below 0 outside.
double Depth(const std::vector<Side>& sides, const PlanPoint& point) {
    double nearest = std::numeric_limits<double>::infinity();
    for (const Side& side : sides) nearest = std::min(nearest, Distance(side, point));
    return IsInside(sides, point) ? nearest : -nearest;
}

struct Square {
    PlanPoint middle;
    double half;
    double depth;

    double Best() const { return depth + half * std::numbers::sqrt2; }
    friend bool operator<(const Square& a, const Square& b) { return a.Best() < b.Best(); }
};

/// Whether the side passes through the box: its part within the box's X is above or below.
bool Crosses(const Side& side, const PlanExtent& box) {
    double from = 0, to = 1;
    const auto clip = [&](double at, double step, double low, double high) {
        if (step == 0) return at > low && at < high;
        const double a = (low - at) / step, b = (high - at) / step;
        from = std::max(from, std::min(a, b));
        to = std::min(to, std::max(a, b));
        return from < to;
    };
    return clip(side.from.x, side.to.x - side.from.x, box.low.x, box.high.x) &&
           clip(side.from.y, side.to.y - side.from.y, box.low.y, box.high.y);
}

}  // namespace

bool IsInside(const PlanArea& area, const PlanPoint& point) {
    return IsInside(SidesOf(area), point);
}

std::optional<PlanPoint> InnermostPoint(const PlanArea& area, double stretch) {
    constexpr std::size_t mostSteps = 4000000;  // squares times sides
    const std::vector<Side> sides = SidesOf(area, stretch);
    PlanExtent extent;
    for (const Side& side : sides) extent.Add(side.from);
    const double size = std::max(extent.Width(), extent.Height());
    if (!(size > 0)) return std::nullopt;
    std::priority_queue<Square> squares;
    const auto add = [&](const PlanPoint& middle, double half) {
        squares.push({middle, half, Depth(sides, middle)});
    };
    add({(extent.low.x + extent.high.x) / 2, (extent.low.y + extent.high.y) / 2}, size / 2);
    Square best = squares.top();
    for (std::size_t steps = 0; !squares.empty() && steps < mostSteps; steps += 4 * sides.size()) {
        const Square square = squares.top();
        squares.pop();
        if (square.depth > best.depth) best = square;
        if (square.Best() <= best.depth + size / 500) break;
        const double half = square.half / 2;
        for (const double x : {-half, half}) {
            for (const double y : {-half, half}) {
                add({square.middle.x + x, square.middle.y + y}, half);
            }
        }
    }
    if (!(best.depth > 0)) return std::nullopt;
    return PlanPoint{best.middle.x, best.middle.y / stretch};
}

bool HoldsBox(const PlanArea& area, const PlanExtent& box) {
    const std::vector<Side> sides = SidesOf(area);
    const PlanPoint middle = {(box.low.x + box.high.x) / 2, (box.low.y + box.high.y) / 2};
    return IsInside(sides, middle) &&
           std::none_of(sides.begin(), sides.end(),
                        [&](const Side& side) { return Crosses(side, box); });
}

bool TakenBoxes::Take(const PlanExtent& box) {
    const bool isFree = std::none_of(boxes.begin(), boxes.end(), [&](const PlanExtent& taken) {
        return box.low.x < taken.high.x && taken.low.x < box.high.x && box.low.y < taken.high.y &&
               taken.low.y < box.high.y;
    });
    if (isFree) boxes.push_back(box);
    return isFree;
}

}  // namespace ZVSmartModel
