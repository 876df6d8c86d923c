#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <vector>

#include "model/plan/Drawing.h"
#include "model/plan/FloorLevels.h"
#include "model/plan/MeshSection.h"
#include "model/plan/PlacedRecords.h"
#include "model/plan/PlanExtent.h"
#include "model/plan/SurfaceView.h"

namespace ZVSmartModel {

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
    struct Kind {
        bool isStair = false;    ///< all its treads are looked at
        bool staysHome = false;  ///< it shows on the plan of its own floor alone
    };
    /// `own` is the plan of the component's floor, if that is drawn. `levels` and `limits` are
    /// borrowed.
    ComponentDrawing(const FloorLevels& levels, std::optional<std::size_t> own, const Kind& kind,
                     Budget& limits);

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
    /// The plans that the component may be on, ascending: its own and those that see it.
    std::vector<std::size_t> Plans() const;
    const ComponentViews& Views(std::size_t plan) const;

  private:
    struct Section {
        PlanShapes closed;
        SurfaceSection open;  ///< pieces that close no loop in a surface of their own
    };

    std::vector<std::size_t> Seeing(const HeightRange& range) const;
    void AddViews(const PlacedSurface& surface);
    void AddViewBelow(const PlacedSurface& surface, const PlanHeights& heights,
                      ComponentViews& seen);

    const FloorLevels& levels;
    std::optional<std::size_t> own;
    Kind kind;
    Budget& limits;
    std::vector<double> ownPlane;  ///< where it is none of those that all are cut at
    PlanShapes symbol;
    std::map<double, Section> sections;
    std::map<std::size_t, ComponentViews> views;  ///< by plan
    HeightRange reach;
    PlanExtent bodyExtent;
    std::optional<ZVSmartZvg::CZVIMTransf> placement;
    std::size_t corners = 0;
};

/// How many corners the shapes have.
std::size_t CornersOf(const PlanShapes& shapes);

}  // namespace ZVSmartModel
