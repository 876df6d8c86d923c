#pragma once

#include <cstddef>
#include <map>
#include <vector>

#include "model/plan/Drawing.h"
#include "model/plan/MeshSection.h"
#include "model/plan/PlacedRecords.h"

namespace ZVSmartModel {

/// Draws one component in both ways: what its curves show from above, and its sections at
/// several heights.
class ComponentDrawing {
  public:
    /// `heights` ascend; they and `limits` are borrowed.
    ComponentDrawing(const std::vector<double>& heights, Budget& limits)
        : heights(heights), limits(limits) {}

    void Add(const PlacedRecord& placed);

    /// About how many corners the drawing has by now.
    std::size_t Corners() const { return corners; }
    /// How far the surfaces reach; empty while there are none.
    const HeightRange& Reach() const { return reach; }
    /// Closed outlines and all other curves, as seen from above.
    const PlanShapes& Symbol() const { return symbol; }

    /// The sections by their heights; none where the surfaces leave a gap. Call it once, at the
    /// end.
    std::map<double, PlanShapes> TakeSections();

  private:
    struct Section {
        PlanShapes closed;
        SurfaceSection open;  ///< pieces that close no loop in a surface of their own
    };

    const std::vector<double>& heights;
    Budget& limits;
    PlanShapes symbol;
    std::map<double, Section> sections;
    HeightRange reach;
    std::size_t corners = 0;
};

}  // namespace ZVSmartModel
