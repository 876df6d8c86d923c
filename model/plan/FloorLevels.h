#pragma once

#include <cstddef>
#include <vector>

#include "model/plan/HeightRange.h"

namespace ZVSmartModel {

/// Heights of a floor's plan.
struct PlanHeights {
    double bottom;  ///< what ends above it is seen
    double plane;   ///< where bodies are cut
    double next;    ///< of the floor above; infinite for the topmost
    bool hasViews;  ///< what lies below and above the plane is looked at
};

/// The heights of all plans, which are found by how far up and down something reaches: in a tower
/// hardly any plan shows a given component.
class FloorLevels {
  public:
    /// `heights` are borrowed, by plan. Between those of one bottom, plane and next floor and those
    /// of another all three go up together, but for plans with an infinite plane.
    explicit FloorLevels(const std::vector<PlanHeights>& heights);

    const PlanHeights& Of(std::size_t plan) const { return heights[plan]; }
    bool AnyHasViews() const { return !planes.empty(); }
    /// The planes of the plans that have views, ascending, each once.
    const std::vector<double>& Planes() const { return planes; }

    /// The plans with views, ascending, on which what reaches so far may be cut or seen; some may
    /// show nothing of it.
    std::vector<std::size_t> Seeing(const HeightRange& reach) const;

  private:
    const std::vector<PlanHeights>& heights;
    std::vector<double> planes;
    std::vector<std::size_t> byPlane;    ///< those with views and a finite plane
    std::vector<std::size_t> fromAbove;  ///< those with views and an infinite one
};

}  // namespace ZVSmartModel
