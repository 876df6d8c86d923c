#include <algorithm>
#include <filesystem>
#include <system_error>
#include <unordered_set>

#include "ZVSmartModel/Query.h"

namespace ZVSmartModel {

namespace fs = std::filesystem;

namespace {

std::vector<std::string> FilesBelow(const std::string& folder) {
    std::vector<std::string> found;
    std::error_code error;
    fs::recursive_directory_iterator at(folder, error);
    for (; !error && at != fs::recursive_directory_iterator(); at.increment(error)) {
        std::error_code unknown;
        if (at->path().extension() == ".zvg" && !at->is_directory(unknown)) {
            found.push_back(at->path().string());
        }
    }
    if (error) throw Error(Status::InputOutput, folder + ": " + error.message(), folder);
    std::sort(found.begin(), found.end());
    return found;
}

}  // namespace

std::vector<std::string> FindBlockFiles(const std::vector<std::string>& paths) {
    std::vector<std::string> files;
    std::unordered_set<std::string> known;
    const auto add = [&](const std::string& path) {
        if (known.insert(path).second) files.push_back(path);
    };
    for (const std::string& path : paths) {
        std::error_code unknown;
        if (!fs::is_directory(path, unknown)) {
            add(path);
        } else {
            for (const std::string& file : FilesBelow(path)) add(file);
        }
    }
    return files;
}

}  // namespace ZVSmartModel
