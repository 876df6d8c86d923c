#pragma once

#include <optional>
#include <vector>

#include "ZVSmartZvg/ParamFace.h"

namespace ZVSmartZvg {

/// The turn about the origin that brings each point of `from` within the keys' tolerance of its
/// counterpart in `to`; none where that of the least squares does not, or all lie on one line.
///
/// A frame is only known as well as the points that fix it: where two of them are close together,
/// noise far below the tolerance turns it, and moves the points far from them by more. What such
/// faces have in common shows when one is turned back onto the other. Distances from the origin
/// stay what they are, so a shape that differs there does not fit.
std::optional<CZVIMTransf> FittingTurn(const std::vector<CZVIMPosition>& from,
                                       const std::vector<CZVIMPosition>& to);

/// The same for shells with a frame that vectors of length `radius` along X and Y fix: the tips of
/// these must come together too, so that the frame turns no farther than it is known. The face
/// lists must be the same.
std::optional<CZVIMTransf> FittingTurn(const CZVIMShell& from, double fromRadius,
                                       const CZVIMShell& to, double toRadius);

}  // namespace ZVSmartZvg
