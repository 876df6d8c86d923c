#pragma once

#include <string>
#include <vector>

#include "tools/zvg/pack/PackModel.h"

/// The words that a child process is given to import a model and to write it, as a block file, to
/// the file that its parent opened. The child does it in RunChildIfAsked, and tells its parent
/// what was packed, or why that failed.
std::vector<std::string> PackJobArguments(const PackOptions& options);
