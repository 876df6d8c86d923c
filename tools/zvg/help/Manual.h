#pragma once

#include <string>

#include "tools/zvg/help/CommandLine.h"

namespace ZVSmartModel::Tool {

/// The page zvg(1) in the man macros of troff. `version` stands in its foot.
std::string ManualPage(const CommandHelp& help, const std::string& version);

}  // namespace ZVSmartModel::Tool
