#pragma once

#include "ZVSmartModel/Exports.h"
#include "model/element/Budget.h"
#include "model/element/ProgressPace.h"
#include "model/scene/Scene.h"

namespace ZVSmartModel {

/// Gives each surface the normals and edges that `options` ask for, and for compression the order
/// of points and triangles that compresses well. What it takes is charged to `limits`. Throws
/// Cancelled.
void AddDetails(Scene& scene, const ExportOptions& options, Budget& limits, ProgressPace& pace);

}  // namespace ZVSmartModel
