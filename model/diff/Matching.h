#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "model/diff/BlockContents.h"

namespace ZVSmartModel {

/// What stands where in two lists: the positions in the first and in the second, for whatever is
/// in both; else one of them.
using MatchedPair = std::pair<std::optional<std::size_t>, std::optional<std::size_t>>;

/// Matches floors by their names, and of what is left those of one order: these were renamed.
/// The pairs stand in the first file's order, what only the second has behind them.
std::vector<MatchedPair> MatchFloors(const std::vector<FloorEntry>& a,
                                     const std::vector<FloorEntry>& b);

/// Matches components by their keys, those on one floor first; several of one key in their order.
/// The components' `floor` must number the floors of both files alike. The pairs stand in the
/// first file's order, what only the second has behind them.
std::vector<MatchedPair> MatchComponents(const std::vector<CompEntry>& a,
                                         const std::vector<CompEntry>& b);

}  // namespace ZVSmartModel
