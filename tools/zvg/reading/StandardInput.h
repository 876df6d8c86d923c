#pragma once

#include <string>

#include "model/element/OpenedBlock.h"

namespace ZVSmartModel::Tool {

/// Opens an input file by the name that the user gives; "-" is standard input, which begins where
/// its reader left it. Those of one process share what they read from there, so that it may be
/// named twice. Throws what OpenInput throws, and Error Usage for a terminal as standard input.
OpenedFile OpenNamed(const std::string& path);

}  // namespace ZVSmartModel::Tool
