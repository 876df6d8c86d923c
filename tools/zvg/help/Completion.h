#pragma once

#include <string>

#include "tools/zvg/help/CommandLine.h"

namespace ZVSmartModel::Tool {

/// A completion script for a shell: commands, then the command's options, else files.
std::string BashCompletion(const CommandHelp& help);
std::string ZshCompletion(const CommandHelp& help);
std::string FishCompletion(const CommandHelp& help);

}  // namespace ZVSmartModel::Tool
