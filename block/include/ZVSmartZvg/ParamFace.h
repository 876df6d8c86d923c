#pragma once

#include <string>
#include <vector>

#include "ZVIM/Position.h"
#include "ZVIM/Shell.h"
#include "ZVIM/Transf.h"
#include "ZVIM/Vector.h"
#include "ZVSmartZvg/Export.h"

namespace ZVSmartZvg {

using ZVIM::GeometryModelResource::CZVIMShell;
using ZVIM::GeometryPrimitiveResource::CZVIMPosition;
using ZVIM::GeometryPrimitiveResource::CZVIMTransf;
using ZVIM::GeometryPrimitiveResource::CZVIMVector;

/// A piece of a circular cylinder. Angles in radians, lengths in the model's unit.
struct SZVLGParamCylinderFace {
    CZVIMPosition center;  ///< origin of the local frame
    CZVIMVector axis;      ///< direction in which heights are measured
    CZVIMVector
        radiusVector;        ///< from the axis to the surface at angle 0; its length is the radius
    CZVIMVector refVector;   ///< second in-plane direction; radiusVector × refVector is local Z
    double startAngle = 0;   ///< from `radiusVector` towards `refVector`
    double endAngle = 0;     ///< above `startAngle`; whole turns between them do not count
    double startHeight = 0;  ///< along `axis`
    double endHeight = 0;    ///< along `axis`; above or below `startHeight`
    CZVIMShell shell;        ///< the tessellated face, in world coordinates
};

/// A profile swept about an axis. Angles in radians, lengths in the model's unit.
struct SZVLGParamRevolvedFace {
    CZVIMPosition center;      ///< origin of the local frame, from which the profile is measured
    CZVIMVector axis;          ///< direction along which the profile is measured
    CZVIMVector radiusVector;  ///< direction of angle 0; its length is the radius of sampling
    CZVIMVector refVector;     ///< second in-plane direction; radiusVector × refVector is local Z
    double startAngle = 0;     ///< from `radiusVector` towards `refVector`
    double endAngle = 0;       ///< above `startAngle`; whole turns between them do not count
    double startHeight = 0;    ///< not read
    double endHeight = 0;      ///< not read
    CZVIMShell shell;          ///< not read
    /// The profile: X is the distance from the axis, Z the position along it.
    std::vector<CZVIMPosition> profile;
};

/// A surface of straight rulings between two guiding curves.
struct SZVLGParamRuledFace {
    std::vector<CZVIMPosition> firstColumn;   ///< points on the first curve
    std::vector<CZVIMPosition> secondColumn;  ///< as many on the second; joined pairwise
};

/// A shared geometry and where it is placed.
struct SZVLGZvgGeoRelInclude {
    std::wstring key;       ///< the identification of the shared geometry
    CZVIMTransf transform;  ///< from the shared geometry's frame to the world
};

}  // namespace ZVSmartZvg
