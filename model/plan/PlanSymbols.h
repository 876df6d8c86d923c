#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ZVIM/Transf.h"
#include "model/plan/Drawing.h"
#include "model/plan/SurfaceView.h"

namespace ZVSmartModel {

/// A door as it is drawn on plans: its opening and, where its operation type (IfcDoor's, such as
/// SINGLE_SWING_LEFT) says how it opens, leaves and swings; else nothing. The opening is the
/// section's box along the door's own axes: X along the wall, swinging to Y, hinged on the left
/// where X begins, as IFC has it.
std::optional<PlanShapes> DoorSymbol(const PlanShapes& section,
                                     const ZVIM::GeometryPrimitiveResource::CZVIMTransf& placement,
                                     const std::string& operation);

/// What is drawn over a stair's treads: an arrow up along their middles and, where the stair goes
/// on above the cut, a break line at the last. Empty for fewer than three treads.
std::vector<PlanPath> StairMarks(const std::vector<LevelFace>& levels, bool goesOn);

}  // namespace ZVSmartModel
