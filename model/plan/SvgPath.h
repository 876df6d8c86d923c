#pragma once

#include <string>
#include <vector>

#include "model/plan/Canvas.h"

namespace ZVSmartModel {

/// The paths as data of one SVG path element. SVG's Y runs down, so that the north is up and
/// what turns counter-clockwise on the plan has the sweep flag 0.
std::string SvgPathData(const std::vector<PlanPath>& paths, const SheetFrame& frame);

/// A number with at most 3 decimals and "." before them, whatever the locale.
std::string SvgNumber(double value);

}  // namespace ZVSmartModel
