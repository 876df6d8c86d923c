#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <vector>

#include "model/plan/Drawing.h"
#include "model/plan/MeshSection.h"
#include "model/plan/PlacedRecords.h"
#include "model/plan/PlanExtent.h"
#include "model/plan/SurfaceView.h"

namespace ZVSmartModel {

/// Heights of a floor's plan.
struct PlanHeights {
    double bottom;  ///< what ends above it is seen
    double plane;   ///< where bodies are cut
    double next;    ///< of the floor above; infinite for the topmost
    bool hasViews;  ///< what lies below and above the plane is looked at
};

/// What is seen of a component on one floor.
struct ComponentViews {
    PlanShapes below;  ///< parts
    HeightRange belowReach;
    PlanShapes above;               ///< lines: outlines of what hangs there, of a stair the treads
    std::vector<LevelFace> levels;  ///< a stair's, below
};

/// Draws one component in all ways: what its curves show from above, its sections at several
/// heights, and what is seen of it on several floors.
class ComponentDrawing {
  public:
    /// `floors` and `limits` are borrowed. Of a stair all treads are looked at.
    ComponentDrawing(const std::vector<PlanHeights>& floors, bool isStair, Budget& limits);

    void Add(const PlacedRecord& placed);

    /// About how many corners the drawing has by now.
    std::size_t Corners() const { return corners; }
    /// How far the surfaces reach; empty while there are none.
    const HeightRange& Reach() const { return reach; }
    /// The same, as seen from above.
    const PlanExtent& BodyExtent() const { return bodyExtent; }
    /// Closed outlines and all other curves, as seen from above.
    const PlanShapes& Symbol() const { return symbol; }
    /// Whether the symbol lies where the body does: on at least half of it, and within it widened
    /// by its own size. True where there is no body.
    bool SymbolLiesOnBody() const;
    /// Where the first surface's record lies, which is how the component itself does.
    const std::optional<ZVSmartZvg::CZVIMTransf>& Placement() const { return placement; }

    /// To be called once, at the end, before what follows.
    void Finish();
    /// The section at a floor's plane; null where the surfaces leave a gap.
    const PlanShapes* SectionAt(double plane) const;
    const ComponentViews& Views(std::size_t floor) const { return views[floor]; }

  private:
    struct Section {
        PlanShapes closed;
        SurfaceSection open;  ///< pieces that close no loop in a surface of their own
    };

    void AddViews(const PlacedSurface& surface);
    void AddViewBelow(const PlacedSurface& surface, const PlanHeights& heights,
                      ComponentViews& seen);

    const std::vector<PlanHeights>& floors;
    bool isStair;
    Budget& limits;
    std::vector<double> planes;  ///< ascending
    PlanShapes symbol;
    std::map<double, Section> sections;
    std::vector<ComponentViews> views;  ///< by floor
    HeightRange reach;
    PlanExtent bodyExtent;
    std::optional<ZVSmartZvg::CZVIMTransf> placement;
    std::size_t corners = 0;
};

/// How many corners the shapes have.
std::size_t CornersOf(const PlanShapes& shapes);

}  // namespace ZVSmartModel
