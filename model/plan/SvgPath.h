#pragma once

#include <string>
#include <vector>

#include "model/plan/Drawing.h"

namespace ZVSmartModel {

/// Where a plan lies on the sheet: the north-western corner (west, north), in metres, at
/// (left, top), in the sheet's units, and how many of these make a metre.
struct SvgFrame {
    double left, top;
    double west, north;
    double unitsPerMetre;
};

/// The paths as data of one SVG path element. SVG's Y runs down, so that the north is up and
/// what turns counter-clockwise on the plan has the sweep flag 0.
std::string SvgPathData(const std::vector<PlanPath>& paths, const SvgFrame& frame);

/// A number with at most 3 decimals and "." before them, whatever the locale.
std::string SvgNumber(double value);

}  // namespace ZVSmartModel
