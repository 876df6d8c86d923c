#pragma once

#include <optional>
#include <vector>

#include "ZVSmartZvg/ParamFace.h"
#include "processing/ShapeIndex.h"

namespace ZVSmartZvg {

/// What a parametric face comes down to: its shape in a frame of its own, with what else tells it
/// from others, and where that frame stands.
template <class Key>
struct DerivedFace {
    Key key;                ///< holds the shape as `localShell`
    CZVIMTransf transform;  ///< from the local frame to the world
};

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

/// What tells swept profiles apart.
struct RevolvedKey {
    std::vector<CZVIMPosition> profile;  ///< at the start angle, in the local frame
    /// As the face has it, Y left out: whatever turns the frame, these distances stay.
    std::vector<CZVIMPosition> ownProfile;
    double radius = 0;
    double span = 0;  ///< radians
    CZVIMShell localShell;

    bool operator<(const RevolvedKey& other) const;
    bool Agrees(const RevolvedKey& other) const;
    std::optional<CZVIMTransf> TurnFrom(const RevolvedKey& other) const;
    std::vector<ShapeSignature> Signatures() const;
};

/// None where the face is degenerate or has too many samples, or holds a number that is not
/// finite or too large; `transform` is then unchanged, but where the sweep is too short to
/// sample it holds the face's placing.
std::optional<DerivedFace<RevolvedKey>> DeriveRevolvedFace(const SZVLGParamRevolvedFace& face,
                                                           CZVIMTransf& transform);

/// What tells ruled faces apart: the positions of their mesh in the local frame.
struct RuledKey {
    CZVIMShell localShell;  ///< its face list follows from the number of points

    bool operator<(const RuledKey& other) const;
    bool Agrees(const RuledKey& other) const;
    std::optional<CZVIMTransf> TurnFrom(const RuledKey& other) const;
    std::vector<ShapeSignature> Signatures() const;
};

/// None where the columns differ in length or have fewer than 2 points, where all points lie on
/// one line, and where a number is not finite or too large.
std::optional<DerivedFace<RuledKey>> DeriveRuledFace(const SZVLGParamRuledFace& face);

}  // namespace ZVSmartZvg
