#include "model/plan/PlanPlacement.h"

#include <cmath>

#include "model/plan/Arc.h"

namespace ZVSmartModel {

namespace {

bool IsInReach(const PlanPoint& point) {
    constexpr double farthest = 1e9;
    return std::fabs(point.x) < farthest && std::fabs(point.y) < farthest;
}

/// The path with each arc as straight pieces.
PlanPath Straightened(const PlanPath& path) {
    constexpr int pieces = 24;
    PlanPath straight;
    straight.closed = path.closed;
    for (std::size_t i = 0; i < path.vertices.size(); ++i) {
        const PlanVertex& from = path.vertices[i];
        const PlanPoint& to = path.vertices[(i + 1) % path.vertices.size()].point;
        straight.vertices.push_back({from.point, 0});
        if (!IsArc(from.point, to, from.bulge)) continue;
        for (int piece = 1; piece < pieces; ++piece) {
            const double fraction = static_cast<double>(piece) / pieces;
            straight.vertices.push_back({ArcPoint(from.point, to, from.bulge, fraction), 0});
        }
    }
    return straight;
}

}  // namespace

PlanPlacement::PlanPlacement(const ZVIM::GeometryPrimitiveResource::CZVIMTransf& toModel)
    : xx(toModel.GetAt(0, 0)),
      xy(toModel.GetAt(0, 1)),
      x0(toModel.GetAt(0, 3)),
      yx(toModel.GetAt(1, 0)),
      yy(toModel.GetAt(1, 1)),
      y0(toModel.GetAt(1, 3)) {}

std::optional<PlanPath> PlanPlacement::Placed(const PlanPath& path) const {
    const int roundness = Roundness();
    PlanPath placed = roundness == 0 ? Straightened(path) : path;
    for (PlanVertex& vertex : placed.vertices) {
        vertex.point = Placed(vertex.point);
        vertex.bulge *= roundness;
        if (!IsInReach(vertex.point) || !std::isfinite(vertex.bulge)) return std::nullopt;
    }
    return placed;
}

PlanPoint PlanPlacement::Placed(const PlanPoint& point) const {
    return {xx * point.x + xy * point.y + x0, yx * point.x + yy * point.y + y0};
}

int PlanPlacement::Roundness() const {
    constexpr double tolerance = 1e-4;
    const double size = std::hypot(xx, yx) + std::hypot(xy, yy);
    const double turned = std::hypot(xx - yy, yx + xy);
    const double mirrored = std::hypot(xx + yy, yx - xy);
    if (turned <= tolerance * size) return 1;
    return mirrored <= tolerance * size ? -1 : 0;
}

}  // namespace ZVSmartModel
