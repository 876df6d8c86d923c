#pragma once

#include <optional>
#include <vector>

#include "processing/DerivedFace.h"
#include "processing/ShapeIndex.h"

namespace ZVSmartZvg {

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

}  // namespace ZVSmartZvg
