#pragma once

#include <string>

#include "model/import/ImportReport.h"

namespace ZVSmartModel {

/// Cuts references of a STEP file's entities that lead back to the entity they come from, also by
/// way of others: a reader that follows them never ends. Each becomes `$`, "no value", in `bytes`,
/// and is a warning with the entities' numbers. No building model needs one.
void CutStepCycles(std::string& bytes, const ImportReport& report);

}  // namespace ZVSmartModel
