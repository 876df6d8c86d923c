#pragma once

#include "model/plan/Drawing.h"

namespace ZVSmartModel {

// Arcs given by their ends and a bulge. With the chord d from one end to the other and the bulge
// b, the radius is |d| (1 + b²) / (4 |b|) and the center lies (1 - b²) / (4 b) of the chord's
// length to the left of its middle; both follow from b = tan(angle / 4), as in the DXF
// reference's LWPOLYLINE (group code 42).

/// The radius of an arc whose bulge is not 0.
double ArcRadius(const PlanPoint& from, const PlanPoint& to, double bulge);

/// The point at `fraction` of the way along the arc, 0 to 1.
PlanPoint ArcPoint(const PlanPoint& from, const PlanPoint& to, double bulge, double fraction);

/// Whether the piece is drawn as an arc: neither straight to the eye nor beyond what numbers
/// hold.
bool IsArc(const PlanPoint& from, const PlanPoint& to, double bulge);

/// The area that a closed path winds around, counter-clockwise above 0; arcs count as they are.
double AreaOf(const PlanPath& path);

}  // namespace ZVSmartModel
