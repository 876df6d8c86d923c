#pragma once

#include <optional>
#include <vector>

#include "ZVSmartZvg/Geo.h"
#include "model/plan/Drawing.h"
#include "model/plan/MeshSection.h"

namespace ZVSmartModel {

/// The closed outline that CZVLGBlockInfoDeal finds in the curves of the record itself, placed;
/// nothing where it finds none or a number of it is no place on a plan. Arcs stay arcs where the
/// placement keeps circles round as seen from above, else they become short straight pieces. What
/// a placement tilts is looked at in the model's XOY plane, everything else in its own.
std::optional<PlanPath> PlacedOutline(const ZVSmartZvg::SZVLGZvgGeo& record,
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
