#pragma once

#include <optional>

#include "processing/DerivedFace.h"

namespace ZVSmartZvg {

/// What tells the pieces of cylinders apart.
struct CylinderKey {
    double radius = 0;
    double span = 0;        ///< radians
    double height = 0;      ///< negative where the frame's Z runs against the axis
    CZVIMShell localShell;  ///< empty where the face lies wholly on its two cap planes

    bool operator<(const CylinderKey& other) const;
};

/// None where the face is degenerate or holds a number that is not finite or too large.
std::optional<DerivedFace<CylinderKey>> DeriveCylinderFace(const SZVLGParamCylinderFace& face);

}  // namespace ZVSmartZvg
