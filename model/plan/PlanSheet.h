#pragma once

#include <cstddef>
#include <string>

#include "model/plan/Canvas.h"
#include "model/plan/Drawing.h"
#include "model/plan/SheetLayout.h"

namespace ZVSmartModel {

/// What all floors show, with the boxes that dimensions stand around.
PlanExtent ExtentOf(const PlanDrawing& drawing);

/// Draws the floors where the layout has them, each under its name and with a scale bar, and the
/// title below: what lies below the cut from low to high, each covering what lies under it, then
/// what hangs above, dashed, then what is cut.
/// Walls and columns of one material are outlined as one. Returns how many labels found no room.
std::size_t DrawSheet(const PlanDrawing& drawing, const std::string& title,
                      const SheetLayout& layout, Canvas& canvas);

}  // namespace ZVSmartModel
