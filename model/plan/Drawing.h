#pragma once

#include <cstddef>
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

/// What is seen of one surface: it covers what lies below.
struct PlanPart {
    PlanArea cover;  ///< all paths turn one way around what they wind around
    std::vector<PlanPath> edges;
    double top = 0;  ///< metres
};

/// What is drawn of a component.
struct PlanShapes {
    std::vector<PlanArea> areas;
    std::vector<PlanPath> lines;
    std::vector<PlanPart> parts;  ///< from low to high

    bool IsEmpty() const { return areas.empty() && lines.empty() && parts.empty(); }
};

struct PlanComponent : PlanShapes {
    ZVSmartZvg::SZVLGCompIndex index;
    std::string identity;   ///< the component's GUID, UTF-8
    std::string name;       ///< what a person calls it, UTF-8
    std::string className;  ///< level 2, UTF-8
    std::string material;   ///< what it consists of; walls of one material are joined
    std::string zone;       ///< whose colour a room has; empty for the class's
    DrawnAs drawnAs = DrawnAs::Section;
    std::size_t PlanFloorSummary::*countedIn = nullptr;  ///< null where another piece is
    bool visits = false;                                 ///< filed under another floor
    double top = 0;  ///< metres: what is higher covers what is lower
};

/// A text on a plan.
struct PlanLabel {
    std::vector<std::string> lines;  ///< the first is the most important
    PlanArea room;                   ///< what it must lie in; empty for a tag
    PlanPoint at;                    ///< what a tag stands at
};

/// A building axis.
struct PlanAxis {
    std::string tag;
    PlanPath path;
};

struct PlanFloor {
    PlanFloorSummary summary;
    bool isRoof = false;  ///< seen from above, nothing cut
    std::vector<PlanComponent> components;
    std::vector<PlanLabel> labels;
};

/// All that is drawn.
struct PlanDrawing {
    std::vector<PlanFloor> floors;
    std::vector<PlanAxis> axes;
    std::optional<double> north;  ///< radians from the X axis, counter-clockwise; none if not known
};

}  // namespace ZVSmartModel
