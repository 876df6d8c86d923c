#pragma once

#include <optional>
#include <vector>

#include "processing/DerivedFace.h"
#include "processing/ShapeIndex.h"

namespace ZVSmartZvg {

/// What tells the pieces of cylinders apart.
struct CylinderKey {
    double radius = 0;
    double span = 0;    ///< radians
    double height = 0;  ///< negative where the frame's Z runs against the axis
    CZVIMShell localShell;
    /// The face lies wholly on its two cap planes: its shell does not count among such faces, and
    /// is less than any other's.
    bool isOnCapPlanes = false;

    bool operator<(const CylinderKey& other) const;
    bool Agrees(const CylinderKey& other) const;
    std::optional<CZVIMTransf> TurnFrom(const CylinderKey& other) const;
    std::vector<ShapeSignature> Signatures() const;
};

/// None where the face is degenerate or holds a number that is not finite or too large.
std::optional<DerivedFace<CylinderKey>> DeriveCylinderFace(const SZVLGParamCylinderFace& face);

}  // namespace ZVSmartZvg
