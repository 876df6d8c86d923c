#pragma once

#include "model/import/ImportReport.h"
#include "model/import/Model.h"

namespace ZVSmartModel {

/// Takes out of an imported model what has no place in space, with a warning that names each
/// element it is taken from: placements with a number that is none or lies beyond
/// `farthestCoordinate`, and shapes of which nothing is left, as `ModelShape::unusable` tells.
/// Elements stay; those of meshes, which are nothing without their shapes, go.
void LeaveOutUnusable(Model& model, const ImportReport& report);

}  // namespace ZVSmartModel
