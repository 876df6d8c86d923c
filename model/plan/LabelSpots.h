#pragma once

#include <optional>
#include <vector>

#include "model/plan/Drawing.h"
#include "model/plan/PlanExtent.h"

namespace ZVSmartModel {

/// Whether the point lies in an odd number of the paths; arcs count as a few chords.
bool IsInside(const PlanArea& area, const PlanPoint& point);

/// The point of an area that is furthest from its outlines, or nearly so, where lengths along Y
/// count `stretch` times: above 1 for what is wider than high. Found by halving squares that may
/// hold a better one, the most promising first. None for an area without inside.
std::optional<PlanPoint> InnermostPoint(const PlanArea& area, double stretch);

/// Whether the box lies in the area and no outline passes through it.
bool HoldsBox(const PlanArea& area, const PlanExtent& box);

/// Where texts stand already.
class TakenBoxes {
  public:
    /// False where it would lie on one that is taken; else it is from now on.
    bool Take(const PlanExtent& box);

  private:
    std::vector<PlanExtent> boxes;
};

}  // namespace ZVSmartModel
