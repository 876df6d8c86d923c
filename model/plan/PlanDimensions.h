#pragma once

#include <optional>
#include <vector>

#include "model/plan/Canvas.h"
#include "model/plan/Drawing.h"
#include "model/plan/PlanExtent.h"
#include "model/plan/SheetLayout.h"

namespace ZVSmartModel {

/// The box around what outer dimensions measure, the cut walls and columns of a floor, along the
/// direction in which most of these run.
struct WallBox {
    double angle = 0;   ///< radians from the X axis to that of the box, at most a quarter of pi
    PlanExtent extent;  ///< metres along the box's own axes

    /// A point that is given along the box's own axes.
    PlanPoint InModel(const PlanPoint& point) const;
};

/// None where there are none or where they have no common direction, for which it would say
/// nothing.
std::optional<WallBox> WallBoxOf(const PlanFloor& floor);

/// The room that axes and dimensions take around a drawing.
SheetApron ApronOf(const PlanDrawing& drawing);

/// Draws the distances of straight axes that run along the walls, or along X and Y where there are
/// none, and the walls' overall width and depth: below and right of the drawing, or of walls that
/// do not run along X and Y.
void DrawDimensions(const PlanFloor& floor, const std::vector<PlanAxis>& axes,
                    const SheetLayout& layout, const SheetFrame& frame, Canvas& canvas);

}  // namespace ZVSmartModel
