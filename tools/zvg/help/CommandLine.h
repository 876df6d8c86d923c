#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace ZVSmartModel::Tool {

/// One option of a command, or one of its arguments.
struct OptionHelp {
    std::vector<std::string> names;  ///< as typed: "-o", "--output"; none for an argument
    std::string argument;            ///< the argument's own name; empty for an option
    bool takesValue = false;
    bool required = false;
    std::string description;
};

/// What the help says of a command.
struct CommandHelp {
    std::string name;
    std::string description;
    std::string footer;
    std::vector<OptionHelp> options;
    std::vector<CommandHelp> commands;
};

/// Reads the help of `app` and its commands, so that manual and completions say what it says.
CommandHelp HelpOf(const CLI::App& app);

}  // namespace ZVSmartModel::Tool
