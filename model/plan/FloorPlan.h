#pragma once

#include <functional>

#include "model/element/OpenedBlock.h"
#include "model/plan/Drawing.h"
#include "model/plan/PlacedRecords.h"

namespace ZVSmartModel {

/// Sections lie this far above their floor, in metres: above parapets, through doors and windows.
constexpr double cutHeight = 1.2;

/// Draws a floor: each component's closed outlines and its other curves or, where it has no
/// outline, the section of its surfaces `cutHeight` above the floor's elevation. Components that
/// neither gives anything of are left out, and so are axes. Components that cannot be read are
/// remembered by `block`, geometries by `records`. `atEachStep` is called often, and may throw.
/// Throws Error Damaged where one floor has more corners than any drawing.
PlanFloor DrawFloor(OpenedBlock& block, PlacedRecords& records, unsigned int floor,
                    const std::function<void()>& atEachStep);

}  // namespace ZVSmartModel
