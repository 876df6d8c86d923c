#pragma once

#include <vector>

#include "ZVSmartZvg/Geo.h"
#include "model/plan/Drawing.h"
#include "model/plan/MeshSection.h"

namespace ZVSmartModel {

/// The closed outlines in the curves of the record itself, placed, the largest first: closed
/// polylines, circles, and what CZVLGBlockInfoDeal closes of curves that are joined to each other.
/// Curves around no area are none, nor is what has a number that is no place on a plan. Arcs stay
/// arcs where the placement keeps circles round as seen from above, else they become short
/// straight pieces. What a placement tilts is looked at in the model's XOY plane, everything else
/// in its own.
std::vector<PlanPath> PlacedOutlines(const ZVSmartZvg::SZVLGZvgGeo& record,
                                     const ZVSmartZvg::CZVIMTransf& toModel);

/// All curves of the record itself as seen from above, placed: polylines, line segments, arcs and
/// circles. Curves that are no place on a plan are left out.
std::vector<PlanPath> PlacedCurves(const ZVSmartZvg::SZVLGZvgGeo& record,
                                   const ZVSmartZvg::CZVIMTransf& toModel);

/// Adds the loops of a section that CZVLGBlockInfoDeal closes, as one area. Returns the pieces that
/// are left.
SurfaceSection AddRings(const SurfaceSection& section, PlanShapes& shapes);

/// Adds the pieces of a section as lines.
void AddLines(const SurfaceSection& section, PlanShapes& shapes);

}  // namespace ZVSmartModel
