#pragma once

#include <string>
#include <vector>

#include "tools/zvg/import/ImportReport.h"
#include "tools/zvg/import/Model.h"
#include "tools/zvg/import/ModelFile.h"

/// The formats that this build reads, such as "IFC" and "glTF".
std::vector<std::string> ImporterNames();

/// Reads the building model that `open` gives with the importer that its first bytes, or else the
/// extension of `path`, call for. What has no place in space is left out with a warning. Throws
/// ImportError where it cannot be read, its format is unknown, or this build has no importer for
/// it. The importers are big libraries that may crash on hostile files: call this in a child
/// process.
Model ImportModel(const std::string& path, const OpenModelFile& open, const ImportOptions& options,
                  const ImportReport& report);
