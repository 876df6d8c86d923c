#pragma once

#include <optional>
#include <vector>

#include "ZVSmartZvg/ParamFace.h"

namespace ZVSmartZvg {

// How the keys of the include tables compare. Each `Compare` returns a negative number where `a`
// is less, a positive one where `b` is, and 0 where neither is. Such an order is not transitive,
// and points of one cell of the order of positions are not told apart however far from each other
// the points behind them lie: what an ordered table finds may not agree, and what agrees may not
// be found. Each `Agree` says for certain; what a turn brings to agree FittingTurn finds. All
// numbers are finite.

/// Lengths in the model's unit and angles in radians that differ by no more agree.
constexpr double keyTolerance = 0.001;

int CompareValues(double a, double b);

/// Fewer points are less; else the first pair farther apart than the tolerance decides, by the
/// order of positions.
int ComparePoints(const std::vector<CZVIMPosition>& a, const std::vector<CZVIMPosition>& b);

/// Fewer points are less, then fewer face entries, then the smaller face entry at the first that
/// differs, then the points decide.
int CompareShells(const CZVIMShell& a, const CZVIMShell& b);

/// All pairs lie within the tolerance, and there are as many of one as of the other.
bool AgreeValues(double a, double b);
bool AgreePoints(const std::vector<CZVIMPosition>& a, const std::vector<CZVIMPosition>& b);
/// So do the points, and the face lists are the same.
bool AgreeShells(const CZVIMShell& a, const CZVIMShell& b);

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
