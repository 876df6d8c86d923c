#pragma once

#include <string>

#include "tools/zvg/import/Model.h"

/// What came of a model, as one line of JSON: for each type of element how many the model has, how
/// many arrived and how many of those with a body, then each finding with its count and where it
/// was made. docs/GUIDE.md describes it.
std::string PackReport(const Model& model, const std::string& modelPath);
