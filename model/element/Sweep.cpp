#include "model/element/Sweep.h"

#include <cmath>
#include <numbers>

namespace ZVSmartModel {

using namespace ZVSmartZvg;

CZVIMPosition Sweep::At(double t) const {
    return center + u * std::cos(t) + v * std::sin(t);
}

Sweep SweepOf(const CZVIMBoundArc& arc) {
    CZVIMVector normal = arc.getNormal();
    normal.normalise();
    const CZVIMVector toStart = arc.getStartpt() - arc.getCenter();
    return {arc.getCenter(), toStart, normal.CrossProduct(toStart), arc.getSubtend()};
}

Sweep SweepOf(const CZVIMCircle& circle) {
    CZVIMVector normal = circle.getNormal();
    normal.normalise();
    const CZVIMVector aside =
        std::fabs(normal.GetX()) < 0.5 ? CZVIMVector(1, 0, 0) : CZVIMVector(0, 1, 0);
    CZVIMVector inPlane = normal.CrossProduct(aside);
    inPlane.normalise();
    const CZVIMVector u = inPlane * circle.getRadius();
    return {circle.getCenter(), u, normal.CrossProduct(u), 2 * std::numbers::pi};
}

}  // namespace ZVSmartModel
