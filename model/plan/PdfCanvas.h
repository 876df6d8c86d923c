#pragma once

#include <memory>
#include <string>
#include <vector>

#include "model/plan/Canvas.h"

namespace ZVSmartModel {

/// A sheet as a PDF document, each page one of its own. Throws Error Usage where this library was
/// built without what writes PDF.
std::unique_ptr<Canvas> MakePdfCanvas(const std::string& title);

}  // namespace ZVSmartModel
