#pragma once

#include <optional>
#include <vector>

#include "processing/DerivedFace.h"

namespace ZVSmartZvg {

/// What tells ruled faces apart: the positions of their mesh in the local frame.
struct RuledKey {
    std::vector<CZVIMPosition> positions;

    bool operator<(const RuledKey& other) const;
};

/// None where the columns differ in length or have fewer than 2 points, where all points lie on
/// one line, and where a number is not finite or too large.
std::optional<DerivedFace<RuledKey>> DeriveRuledFace(const SZVLGParamRuledFace& face);

}  // namespace ZVSmartZvg
