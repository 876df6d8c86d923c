#pragma once

#include <string>
#include <vector>

#include "model/import/ImportReport.h"
#include "model/import/Model.h"
#include "model/import/ModelFile.h"

namespace ZVSmartModel {

/// The formats that this build reads, such as "IFC" and "glTF".
std::vector<std::string> ImporterNames();

/// Reads the building model that `open` gives with the importer that its first bytes, or else the
/// extension of `path`, call for. What has no place in space is left out with a warning. Throws
/// ImportError where it cannot be read, its format is unknown, or this build has no importer for
/// it. The importers are big libraries that may crash on hostile files: call this in a child
/// process.
Model ImportModel(const std::string& path, const OpenModelFile& open, const ImportOptions& options,
                  const ImportReport& report);

}  // namespace ZVSmartModel
