#include "model/plan/WallJoins.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>

#include "model/plan/Chains.h"
#include "model/plan/LabelSpots.h"
#include "model/plan/PlanExtent.h"

namespace ZVSmartModel {

namespace {

constexpr double touching = 0.002;  // metres
constexpr double same = 0.0005;

struct WallSide {
    PlanPoint from, to;
};

struct Body {
    const PlanArea* area;
    PlanExtent box;
    std::vector<WallSide> sides;
    std::vector<std::size_t> neighbours;
};

PlanPoint Along(const WallSide& side, double part) {
    return {side.from.x + part * (side.to.x - side.from.x),
            side.from.y + part * (side.to.y - side.from.y)};
}

bool IsNear(const PlanExtent& a, const PlanExtent& b) {
    return a.low.x < b.high.x + touching && b.low.x < a.high.x + touching &&
           a.low.y < b.high.y + touching && b.low.y < a.high.y + touching;
}

bool Holds(const PlanExtent& box, const PlanPoint& point) {
    return point.x >= box.low.x && point.x <= box.high.x && point.y >= box.low.y &&
           point.y <= box.high.y;
}

PlanExtent BoxOf(const WallSide& side) {
    PlanExtent box;
    box.Add(side.from);
    box.Add(side.to);
    return box;
}

double DistanceTo(const WallSide& side, const PlanPoint& point) {
    const double x = side.to.x - side.from.x, y = side.to.y - side.from.y;
    const double length = x * x + y * y;
    const double dot = (point.x - side.from.x) * x + (point.y - side.from.y) * y;
    const PlanPoint foot = Along(side, length > 0 ? std::clamp(dot / length, 0.0, 1.0) : 0);
    return std::hypot(point.x - foot.x, point.y - foot.y);
}

/// Where the other side meets or ends beside this one, as parts of the way along it.
void AddMeetings(const WallSide& side, const WallSide& other, std::vector<double>& parts) {
    const double x = side.to.x - side.from.x, y = side.to.y - side.from.y;
    const double length = std::hypot(x, y);
    for (const PlanPoint& end : {other.from, other.to}) {
        const double part =
            ((end.x - side.from.x) * x + (end.y - side.from.y) * y) / (length * length);
        if (DistanceTo(side, end) < touching) parts.push_back(part);
    }
    const double ox = other.to.x - other.from.x, oy = other.to.y - other.from.y;
    const double turn = x * oy - y * ox;
    if (std::fabs(turn) <= 1e-9 * length * std::hypot(ox, oy)) return;
    const double dx = other.from.x - side.from.x, dy = other.from.y - side.from.y;
    const double part = (dx * oy - dy * ox) / turn;
    const double otherPart = (dx * y - dy * x) / turn;
    if (otherPart >= 0 && otherPart <= 1) parts.push_back(part);
}

class Joiner {
  public:
    explicit Joiner(const std::vector<const PlanArea*>& areas) {
        for (const PlanArea* area : areas) {
            Body body = {area, {}, {}, {}};
            for (const PlanPath& path : *area) {
                for (std::size_t i = 0; i < path.vertices.size(); ++i) {
                    const PlanPoint& next = path.vertices[(i + 1) % path.vertices.size()].point;
                    body.sides.push_back({path.vertices[i].point, next});
                    body.box.Add(next);
                }
            }
            bodies.push_back(std::move(body));
        }
        FindNeighbours();
    }

    std::vector<PlanPath> Outline() {
        for (std::size_t i = 0; i < bodies.size(); ++i) {
            for (const WallSide& side : bodies[i].sides) Split(i, side);
        }
        return ChainPieces(kept);
    }

  private:
    void FindNeighbours() {
        std::vector<std::size_t> order(bodies.size());
        std::iota(order.begin(), order.end(), std::size_t{0});
        std::sort(order.begin(), order.end(), [this](std::size_t a, std::size_t b) {
            return bodies[a].box.low.x < bodies[b].box.low.x;
        });
        for (std::size_t i = 0; i < order.size(); ++i) {
            Body& body = bodies[order[i]];
            for (std::size_t k = i + 1; k < order.size(); ++k) {
                Body& other = bodies[order[k]];
                if (other.box.low.x > body.box.high.x + touching) break;
                if (!IsNear(body.box, other.box)) continue;
                body.neighbours.push_back(order[k]);
                other.neighbours.push_back(order[i]);
            }
        }
    }

    void Split(std::size_t number, const WallSide& side) {
        const double length = std::hypot(side.to.x - side.from.x, side.to.y - side.from.y);
        if (!(length > 0)) return;
        std::vector<double> parts = {0, 1};
        const PlanExtent box = BoxOf(side);
        for (const std::size_t neighbour : bodies[number].neighbours) {
            if (!IsNear(box, bodies[neighbour].box)) continue;
            for (const WallSide& other : bodies[neighbour].sides) {
                if (IsNear(box, BoxOf(other))) AddMeetings(side, other, parts);
            }
        }
        std::sort(parts.begin(), parts.end());
        double last = 0;
        for (const double part : parts) {
            if (part <= 0 || part > 1 || (part - last) * length < same) continue;
            Keep(number, {Along(side, last), Along(side, part)});
            last = part;
        }
    }

    /// Unless another body lies just outside, or has the same side and is named first.
    void Keep(std::size_t number, const WallSide& piece) {
        const PlanPoint middle = Along(piece, 0.5);
        const double length = std::hypot(piece.to.x - piece.from.x, piece.to.y - piece.from.y);
        const PlanPoint aside = {-(piece.to.y - piece.from.y) / length * touching,
                                 (piece.to.x - piece.from.x) / length * touching};
        const PlanPoint left = {middle.x + aside.x, middle.y + aside.y};
        const PlanPoint right = {middle.x - aside.x, middle.y - aside.y};
        const bool isLeftInside = IsInside(*bodies[number].area, left);
        if (isLeftInside != IsInside(*bodies[number].area, right)) {
            const PlanPoint& outside = isLeftInside ? right : left;
            for (const std::size_t neighbour : bodies[number].neighbours) {
                const Body& other = bodies[neighbour];
                if (Holds(other.box, outside) && IsInside(*other.area, outside)) return;
                if (neighbour < number && HasSide(other, middle)) return;
            }
        }
        kept.push_back({OnGrid(piece.from), OnGrid(piece.to)});
    }

    static bool HasSide(const Body& body, const PlanPoint& point) {
        return std::any_of(body.sides.begin(), body.sides.end(),
                           [&](const WallSide& side) { return DistanceTo(side, point) < same; });
    }

    static SectionPoint OnGrid(const PlanPoint& point) {
        return {std::llround(point.x / sectionStep), std::llround(point.y / sectionStep)};
    }

    std::vector<Body> bodies;
    SurfaceSection kept;
};

}  // namespace

std::vector<PlanPath> JoinedOutline(const std::vector<const PlanArea*>& areas) {
    return Joiner(areas).Outline();
}

}  // namespace ZVSmartModel
