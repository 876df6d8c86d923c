#pragma once

#include <string>

#include "model/import/ImportReport.h"
#include "model/import/Model.h"

namespace ZVSmartModel {

/// Reads an IFC file (STEP form, IFC2X to IFC4) from its bytes. Elements whose body fails come
/// without it, with a warning. Throws ImportError for what holds no building.
Model ImportIfc(std::string bytes, const ImportOptions& options, const ImportReport& report);

}  // namespace ZVSmartModel
