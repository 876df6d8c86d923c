#pragma once

#include "ZVSmartZvg/Geo.h"

namespace ZVSmartModel {

/// A piece of a circle, or of an ellipse: center + cos t · u + sin t · v, for t from 0 to
/// `radians`, which may be negative. Placing it places the three.
struct Sweep {
    ZVSmartZvg::CZVIMPosition center;
    ZVSmartZvg::CZVIMVector u, v;
    double radians = 0;

    ZVSmartZvg::CZVIMPosition At(double t) const;
};

Sweep SweepOf(const ZVSmartZvg::CZVIMBoundArc& arc);
/// A full turn, from wherever.
Sweep SweepOf(const ZVSmartZvg::CZVIMCircle& circle);

}  // namespace ZVSmartModel
