#include "model/plan/Arc.h"

#include <cmath>

namespace ZVSmartModel {

double ArcRadius(const PlanPoint& from, const PlanPoint& to, double bulge) {
    const double chord = std::hypot(to.x - from.x, to.y - from.y);
    return chord * (1 + bulge * bulge) / (4 * std::fabs(bulge));
}

PlanPoint ArcPoint(const PlanPoint& from, const PlanPoint& to, double bulge, double fraction) {
    const double aside = (1 - bulge * bulge) / (4 * bulge);
    const PlanPoint center = {(from.x + to.x) / 2 - (to.y - from.y) * aside,
                              (from.y + to.y) / 2 + (to.x - from.x) * aside};
    const double angle = 4 * std::atan(bulge) * fraction;
    const double x = from.x - center.x;
    const double y = from.y - center.y;
    return {center.x + x * std::cos(angle) - y * std::sin(angle),
            center.y + x * std::sin(angle) + y * std::cos(angle)};
}

bool IsArc(const PlanPoint& from, const PlanPoint& to, double bulge) {
    constexpr double flattest = 1e-6;
    constexpr double largestRadius = 1e6;
    if (!(std::fabs(bulge) > flattest)) return false;
    return ArcRadius(from, to, bulge) < largestRadius;
}

double AreaOf(const PlanPath& path) {
    if (path.vertices.empty()) return 0;
    const PlanPoint& origin = path.vertices.front().point;
    double twice = 0;
    for (std::size_t i = 0; i < path.vertices.size(); ++i) {
        const PlanPoint& a = path.vertices[i].point;
        const PlanPoint& b = path.vertices[(i + 1) % path.vertices.size()].point;
        const double bulge = path.vertices[i].bulge;
        twice += (a.x - origin.x) * (b.y - origin.y) - (b.x - origin.x) * (a.y - origin.y);
        if (!IsArc(a, b, bulge)) continue;
        const double radius = ArcRadius(a, b, bulge);
        const double angle = 4 * std::atan(bulge);
        twice += radius * radius * (angle - std::sin(angle));
    }
    return twice / 2;
}

}  // namespace ZVSmartModel
