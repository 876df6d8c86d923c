#pragma once

#include <vector>

#include "model/plan/Drawing.h"

namespace ZVSmartModel {

/// Takes out of the floors what lies far from all the rest and would shrink the sheet to a dot;
/// WritePlan says what is far. It is counted and named in the summaries. Takes time that grows
/// like n log n.
void TakeOutStrays(std::vector<PlanFloor>& floors);

}  // namespace ZVSmartModel
