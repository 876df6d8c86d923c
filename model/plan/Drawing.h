#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ZVSmartModel/Plan.h"
#include "ZVSmartZvg/CompIndex.h"

namespace ZVSmartModel {

// A plan as it is drawn: metres, X to the east, Y to the north.

struct PlanPoint {
    double x = 0, y = 0;
};

/// A corner of a path. The bulge shapes the piece that leaves it: the tangent of a quarter of the
/// swept angle, positive counter-clockwise, 0 for a straight piece.
struct PlanVertex {
    PlanPoint point;
    double bulge = 0;
};

struct PlanPath {
    std::vector<PlanVertex> vertices;
    bool closed = false;
};

/// Closed paths that are filled together: what an even number of them covers is a hole.
using PlanArea = std::vector<PlanPath>;

/// What a component is drawn as.
enum class DrawnAs { Section, Symbol, Projection, Overhead };

/// What is drawn of a component.
struct PlanShapes {
    std::vector<PlanArea> areas;
    std::vector<PlanPath> lines;

    bool IsEmpty() const { return areas.empty() && lines.empty(); }
};

struct PlanComponent : PlanShapes {
    ZVSmartZvg::SZVLGCompIndex index;
    std::string identity;   ///< the component's GUID, UTF-8
    std::string name;       ///< what a person calls it, UTF-8
    std::string className;  ///< level 2, UTF-8
    DrawnAs drawnAs = DrawnAs::Section;
    bool visits = false;  ///< filed under another floor
};

struct PlanFloor {
    PlanFloorSummary summary;
    std::vector<PlanComponent> components;
};

/// All that is drawn.
struct PlanDrawing {
    std::vector<PlanFloor> floors;
    std::optional<double> north;  ///< radians from the X axis, counter-clockwise; none if not known
};

}  // namespace ZVSmartModel
