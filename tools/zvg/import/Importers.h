#pragma once

#include <string>
#include <vector>

#include "tools/zvg/import/ImportReport.h"
#include "tools/zvg/import/Model.h"

/// The formats that this build reads, such as "IFC" and "glTF".
std::vector<std::string> ImporterNames();

/// Reads the building model at `path` with the importer that its first bytes, or else its
/// extension, call for. Throws ImportError where it cannot be read, its format is unknown, or
/// this build has no importer for it. The importers are big libraries that may crash on hostile
/// files: call this in a child process.
Model ImportModel(const char* path, const ImportReport& report);
