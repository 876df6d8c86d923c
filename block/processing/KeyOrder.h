#pragma once

#include <vector>

#include "ZVSmartZvg/ParamFace.h"

namespace ZVSmartZvg {

// How the keys of the include tables compare. Each function returns a negative number where `a`
// is less, a positive one where `b` is, and 0 where the two agree within the tolerance. Such an
// order is not transitive: a table may miss an entry that agrees, and then holds one more copy,
// but whatever it finds does agree. All numbers are finite.

/// Lengths in the model's unit and angles in radians that differ by no more agree.
constexpr double keyTolerance = 0.001;

int CompareValues(double a, double b);

/// Fewer points are less; else the first pair farther apart than the tolerance decides, by the
/// order of positions.
int ComparePoints(const std::vector<CZVIMPosition>& a, const std::vector<CZVIMPosition>& b);

/// Fewer points are less, then fewer face entries, then the smaller face entry at the first that
/// differs, then the points decide.
int CompareShells(const CZVIMShell& a, const CZVIMShell& b);

}  // namespace ZVSmartZvg
