#pragma once

#include <string>
#include <vector>

#include "ZVIM/Position.h"
#include "ZVIM/Shell.h"
#include "ZVIM/Transf.h"
#include "ZVIM/Vector.h"
#include "ZVSmartZvg/Export.h"

namespace ZVSmartZvg {

// Faces of one kind share a geometry where they agree within 0.001 in every number: radius, swept
// angle and height, the profile as it is drawn, and each point of the local shell by its distance.
// Face lists must be the same. The tolerances of the process have no say in that.
//
// A local frame is known no better than what fixes it: the first points of a ruled face, the
// vectors of the others. Noise there turns the frame and moves far points by more than itself. So
// faces agree too where a turn about the local origin brings every point, and the tips of the
// radius vectors, within 0.001; the transform that is answered then has that turn in it. In each
// case it puts the shared geometry within 0.001 of the face's own points, but for a cylinder face
// whose points all lie on the two planes that cap it, within 0.001: such faces share the geometry
// of the first one with their radius, swept angle and height, whatever their points are.
//
// Agreement is not transitive: a face is compared with those that were stored, not with those
// that shared them. Of several that agree the first stored is taken, unless the order in which
// shapes are looked for finds another one before.

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
