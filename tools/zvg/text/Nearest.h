#pragma once

#include <string>
#include <vector>

namespace ZVSmartModel::Tool {

/// The word that `typed` was probably meant to be: the one that takes the fewest letters changed,
/// added, left out or swapped with their neighbours. Empty where more than a third of the letters
/// would have to be.
std::string Nearest(const std::string& typed, const std::vector<std::string>& words);

}  // namespace ZVSmartModel::Tool
