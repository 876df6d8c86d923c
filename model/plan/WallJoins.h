#pragma once

#include <vector>

#include "model/plan/Drawing.h"

namespace ZVSmartModel {

/// The outline of several areas together, straight sides only: what runs between areas that touch
/// or overlap is left out, so that walls that meet look like one. What is less than 2 mm apart
/// touches. Takes time that grows like n log n with areas that lie side by side.
std::vector<PlanPath> JoinedOutline(const std::vector<const PlanArea*>& areas);

}  // namespace ZVSmartModel
