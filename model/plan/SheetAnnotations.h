#pragma once

#include <string>
#include <vector>

#include "model/plan/Canvas.h"
#include "model/plan/Drawing.h"
#include "model/plan/SheetLayout.h"

namespace ZVSmartModel {

/// How far axes with their tags reach beyond a drawing, in millimetres of paper.
constexpr double axisApron = 14;

/// About the width of a line in a common sans-serif font, in the unit of `size`.
double WidthOf(const std::string& text, double size);

/// Draws building axes through the extent, with their tags in circles at both ends.
void DrawAxes(const std::vector<PlanAxis>& axes, const SheetLayout& layout, const SheetFrame& frame,
              Canvas& canvas);

/// Writes rooms' labels within their outlines, smaller or with fewer lines where these are narrow,
/// and tags beside what they name where there is room. Returns how many stand nowhere.
std::size_t WriteLabels(const PlanFloor& floor, const SheetLayout& layout, const SheetFrame& frame,
                        Canvas& canvas);

}  // namespace ZVSmartModel
