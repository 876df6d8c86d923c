#include "tools/zvg/reading/InputFiles.h"

#include <glob.h>

#include <filesystem>
#include <optional>
#include <system_error>

#include "ZVSmartModel/Query.h"
#include "model/element/Utf8.h"
#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

namespace {

/// What a pattern matches; itself where that is nothing.
std::vector<std::string> Matches(const std::string& pattern) {
    std::error_code unknown;
    const bool isPattern = pattern.find_first_of("*?[") != std::string::npos;
    if (!isPattern || std::filesystem::exists(pattern, unknown)) return {pattern};
    glob_t found = {};
    std::vector<std::string> paths;
    if (glob(pattern.c_str(), 0, nullptr, &found) == 0) {
        paths.assign(found.gl_pathv, found.gl_pathv + found.gl_pathc);
    }
    globfree(&found);
    return paths.empty() ? std::vector{pattern} : paths;
}

}  // namespace

std::vector<std::string> InputFiles(const std::vector<std::string>& arguments) {
    std::vector<std::string> paths;
    for (const std::string& argument : arguments) {
        for (const std::string& path : Matches(argument)) paths.push_back(path);
    }
    std::vector<std::string> files = FindBlockFiles(paths);
    if (files.empty()) {
        const std::string named = paths.empty() ? "there are no files" : paths.front();
        throw Error(Status::NotFound, named + ": no file whose name ends in .zvg");
    }
    return files;
}

void ForEachFile(const std::vector<std::string>& arguments, const std::string& separator,
                 const std::function<void(const std::string& file)>& act) {
    const std::vector<std::string> files = InputFiles(arguments);
    if (files.size() == 1) return act(files.front());
    std::optional<Error> failure;
    Status status = Status::Internal;  // set with the failure
    for (const std::string& file : files) {
        const OutputPrefix prefix(separator.empty() ? "" : EscapeControls(file) + separator);
        try {
            act(file);
        } catch (const Error& error) {
            if (failure) WriteError(failure->what());
            if (!failure) status = error.GetStatus();
            failure.emplace(error);
        }
    }
    if (failure) throw Error(status, failure->what());
}

}  // namespace ZVSmartModel::Tool
