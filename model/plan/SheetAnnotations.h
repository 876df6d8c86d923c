#pragma once

#include <optional>
#include <vector>

#include "model/plan/Canvas.h"
#include "model/plan/Drawing.h"
#include "model/plan/PlanExtent.h"
#include "model/plan/SheetLayout.h"

namespace ZVSmartModel {

/// What outer dimensions measure: the box around cut walls and columns. None where there are none
/// or where these do not run along X and Y, for which it would say nothing.
std::optional<PlanExtent> WallExtent(const PlanFloor& floor);

/// The room that axes and dimensions take around a drawing.
SheetApron ApronFor(bool hasAxes, bool hasDimensions);

/// Draws building axes through the extent, with their tags in circles at both ends.
void DrawAxes(const std::vector<PlanAxis>& axes, const SheetLayout& layout, const SheetFrame& frame,
              Canvas& canvas);

/// Draws the distances of straight axes that run along X or Y, and the walls' overall width and
/// depth, below and right of the drawing.
void DrawDimensions(const PlanFloor& floor, const std::vector<PlanAxis>& axes,
                    const SheetLayout& layout, const SheetFrame& frame, Canvas& canvas);

/// Writes rooms' labels within their outlines, smaller or with fewer lines where these are narrow,
/// and tags beside what they name where there is room. Returns how many stand nowhere.
std::size_t WriteLabels(const PlanFloor& floor, const SheetLayout& layout, const SheetFrame& frame,
                        Canvas& canvas);

}  // namespace ZVSmartModel
