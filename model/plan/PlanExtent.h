#pragma once

#include <limits>

#include "model/plan/Drawing.h"

namespace ZVSmartModel {

/// The box around what is drawn, in metres.
struct PlanExtent {
    static constexpr double infinity = std::numeric_limits<double>::infinity();

    PlanPoint low = {infinity, infinity};  ///< above `high` while nothing is drawn
    PlanPoint high = {-infinity, -infinity};

    void Add(const PlanPoint& point);
    void Add(const PlanExtent& other);
    bool IsEmpty() const { return !(low.x <= high.x); }
    double Width() const { return low.x <= high.x ? high.x - low.x : 0; }
    double Height() const { return low.y <= high.y ? high.y - low.y : 0; }
};

PlanExtent ExtentOf(const PlanShapes& shapes);
PlanExtent ExtentOf(const PlanFloor& floor);

}  // namespace ZVSmartModel
