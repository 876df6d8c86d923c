#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

#include "ZVSmartModel/BlockFile.h"
#include "tools/zvg/Command.h"

namespace ZVSmartModel::Tool {

/// Adds a command whose first argument is a block file, kept in `file`, which must outlive `app`.
/// `example` is the command line that its help shows.
CLI::App* AddReadingCommand(CLI::App& app, const std::string& name, const std::string& description,
                            const std::string& example, std::string& file);

/// The same for any number of block files; folders are searched for them.
CLI::App* AddReadingCommand(CLI::App& app, const std::string& name, const std::string& description,
                            const std::string& example, std::vector<std::string>& files);

// Options that several commands have, kept in what is named, which must outlive `app`.

void AddLimitOption(CLI::App& command, CommonOptions& common);
void AddFloorOption(CLI::App& command, std::optional<std::string>& floor);
void AddClassOption(CLI::App& command, std::optional<std::string>& className);
/// `where` becomes a list of NAME=VALUE; see PropertyTests.
void AddWhereOption(CLI::App& command, std::vector<std::string>& where);
/// `threads` is 0 where all processors are to be used.
void AddThreadsOption(CLI::App& command, unsigned int& threads);
void AddRoomsOption(CLI::App& command, bool& rooms);

/// What --where says. Throws Error, Usage, for what is no NAME=VALUE.
std::vector<PropertyTest> PropertyTests(const std::vector<std::string>& where);

/// Where a command writes; what `--output` and `--force` say.
struct Target {
    std::string path;
    bool force = false;
};

/// Adds both options; `--output`, which `what` describes, is returned.
CLI::Option* AddTargetOptions(CLI::App& command, const std::string& what, Target& target);

}  // namespace ZVSmartModel::Tool
