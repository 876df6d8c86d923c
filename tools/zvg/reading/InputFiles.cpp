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
    std::vector<std::string> files;
    for (const std::string& argument : arguments) {
        for (const std::string& path : Matches(argument)) {
            for (const std::string& file : FindBlockFiles({path})) files.push_back(file);
        }
    }
    if (!files.empty()) return files;
    const std::string named = arguments.empty() ? "no paths" : arguments.front();
    throw Error(Status::NotFound, named + ": no file whose name ends in .zvg");
}

void ForEachFile(const std::vector<std::string>& arguments, const std::string& separator,
                 const std::function<void(const FileTurn& turn)>& act) {
    const std::vector<std::string> files = InputFiles(arguments);
    if (files.size() == 1) return act({files.front(), false});
    std::vector<Error> failures;
    std::optional<Error> notFound;
    std::size_t without = 0;  // files in which something was not found
    for (const std::string& file : files) {
        const OutputPrefix prefix(separator.empty() ? "" : EscapeControls(file) + separator);
        try {
            act({file, true});
        } catch (const Error& error) {
            const bool isNotFound = error.GetStatus() == Status::NotFound;
            if (isNotFound) notFound.emplace(error);
            if (isNotFound) ++without;
            if (!isNotFound) failures.push_back(error);
        }
    }
    if (notFound && without == files.size()) throw Error(*notFound);
    if (failures.empty()) return;
    for (std::size_t i = 0; i + 1 < failures.size(); ++i) WriteError(failures[i].what());
    throw Error(failures.front().GetStatus(), failures.back().what());
}

}  // namespace ZVSmartModel::Tool
