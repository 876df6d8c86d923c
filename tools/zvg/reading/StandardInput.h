#pragma once

#include <string>

#include "ZVSmartModel/BlockFile.h"
#include "model/element/OpenedBlock.h"
#include "tools/zvg/Command.h"

namespace ZVSmartModel::Tool {

/// How messages name an input file.
std::string InputName(const std::string& path);

/// Opens an input file by the name that the user gives; "-" is standard input, which begins where
/// its reader left it. Those of one process share what they read from there, so that it may be
/// named twice. Throws what OpenInput throws, and Error Usage for a terminal as standard input.
OpenedFile OpenNamed(const std::string& path);

/// How the user wants block files to be opened.
OpenOptions OptionsOf(const CommonOptions& common);

/// The same as a block file. Throws what its opening throws as well.
BlockFile OpenBlockFile(const std::string& path, const CommonOptions& common);

}  // namespace ZVSmartModel::Tool
