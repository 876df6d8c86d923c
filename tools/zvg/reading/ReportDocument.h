#pragma once

#include <string>

#include "ZVSmartModel/Pack.h"

namespace ZVSmartModel::Tool {

/// What came of a model, as one line of JSON: for each type of element how many the model has, how
/// many arrived and how many of those with a body, then each finding with its count and where it
/// was made. docs/GUIDE.md describes it.
std::string ReportLine(const PackReport& report, const std::string& modelPath);

}  // namespace ZVSmartModel::Tool
