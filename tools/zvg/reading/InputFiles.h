#pragma once

#include <functional>
#include <string>
#include <vector>

namespace ZVSmartModel::Tool {

/// The files that arguments name: folders stand for the block files in and below them, patterns
/// that no file is named like for what they match. Throws Error, NotFound, where there is none.
std::vector<std::string> InputFiles(const std::vector<std::string>& arguments);

/// Does `act` for each file that arguments name. Of several, each line of output begins with the
/// file's name and `separator`, unless that is empty; what is wrong with one is told and does not
/// keep the others back, and the first one's status is thrown in the end.
void ForEachFile(const std::vector<std::string>& arguments, const std::string& separator,
                 const std::function<void(const std::string& file)>& act);

}  // namespace ZVSmartModel::Tool
