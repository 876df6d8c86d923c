#pragma once

#include <functional>
#include <string>
#include <vector>

namespace ZVSmartModel::Tool {

/// The files that arguments name: folders stand for the block files in and below them, patterns
/// that no file is named like for what they match. Throws Error, NotFound, where there is none.
std::vector<std::string> InputFiles(const std::vector<std::string>& arguments);

/// A file whose turn it is.
struct FileTurn {
    const std::string& file;
    bool isOneOfSeveral;
};

/// Does `act` for each file that arguments name. Of several, each line of output begins with the
/// file's name and `separator`, unless that is empty. What is wrong with one of them is told and
/// does not keep the others back; the first one's status is thrown in the end. What is not found in
/// one matters only where it is found in none.
void ForEachFile(const std::vector<std::string>& arguments, const std::string& separator,
                 const std::function<void(const FileTurn& turn)>& act);

}  // namespace ZVSmartModel::Tool
