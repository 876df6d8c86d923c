#pragma once

#include <optional>
#include <vector>

#include "processing/DerivedFace.h"
#include "processing/ShapeIndex.h"

namespace ZVSmartZvg {

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
