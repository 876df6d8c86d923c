#include <algorithm>

#include "ZVSmartModel/Body.h"
#include "model/scene/PointMath.h"
#include "model/scene/Welding.h"

namespace ZVSmartModel {

namespace {

using Corners = std::array<Point, 3>;

template <class Use>
void ForEachTriangle(const Body& body, Use use) {
    for (const Triangles& surface : body.surfaces) {
        for (const auto& [a, b, c] : surface.triangles) {
            if (std::max({a, b, c}) >= surface.points.size()) continue;
            use(Corners{surface.points[a], surface.points[b], surface.points[c]});
        }
    }
}

/// Counts the sides of edges: one that is used up the numbers of its ends is paid back by one that
/// is used down them.
class EdgeBalance {
  public:
    void Add(const Corners& corners) {
        std::array<std::uint64_t, 3> places;
        for (std::size_t i = 0; i < 3; ++i) places[i] = welding.Number(corners[i]);
        for (std::size_t i = 0; i < 3; ++i) {
            const std::uint64_t from = places[i], to = places[(i + 1) % 3];
            if (from < to) up.push_back(from << 32 | to);
            if (to < from) down.push_back(to << 32 | from);
        }
    }

    bool IsEven() {
        std::sort(up.begin(), up.end());
        std::sort(down.begin(), down.end());
        return up == down && !up.empty();
    }

  private:
    Welding welding;
    std::vector<std::uint64_t> up, down;
};

}  // namespace

Measures Measure(const Body& body) {
    Measures measures;
    Box& box = measures.box;
    EdgeBalance edges;
    ForEachTriangle(body, [&](const Corners& corners) {
        edges.Add(corners);
        for (const Point& corner : corners) {
            for (std::size_t axis = 0; axis < 3; ++axis) {
                box.low[axis] = std::min(box.low[axis], corner[axis]);
                box.high[axis] = std::max(box.high[axis], corner[axis]);
            }
        }
    });
    if (box.IsEmpty()) return measures;
    measures.closed = edges.IsEven();
    ForEachTriangle(body, [&](const Corners& corners) {
        const Point a = Minus(corners[0], box.low), b = Minus(corners[1], box.low),
                    c = Minus(corners[2], box.low);
        measures.area += Length(Cross(Minus(b, a), Minus(c, a))) / 2;
        measures.volume += Dot(a, Cross(b, c)) / 6;
    });
    return measures;
}

}  // namespace ZVSmartModel
