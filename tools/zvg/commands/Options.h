#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

#include "tools/zvg/Command.h"

namespace ZVSmartModel::Tool {

/// Adds a command whose first argument is a block file, kept in `file`, which must outlive `app`.
/// `example` is the command line that its help shows.
CLI::App* AddReadingCommand(CLI::App& app, const std::string& name, const std::string& description,
                            const std::string& example, std::string& file);

// Options that several commands have, kept in what is named, which must outlive `app`.

void AddLimitOption(CLI::App& command, CommonOptions& common);
void AddFloorOption(CLI::App& command, std::optional<std::string>& floor);
void AddClassOption(CLI::App& command, std::optional<std::string>& className);
void AddRoomsOption(CLI::App& command, bool& rooms);

/// Where a command writes; what `--output` and `--force` say.
struct Target {
    std::string path;
    bool force = false;
};

/// Adds both options; `--output`, which `what` describes, is returned.
CLI::Option* AddTargetOptions(CLI::App& command, const std::string& what, Target& target);

}  // namespace ZVSmartModel::Tool
