#pragma once

#include "model/element/Budget.h"
#include "model/export/ExportModel.h"

namespace ZVSmartModel {

/// Makes of all components of a floor one for each look, which bears the look's name and is one
/// mesh; groups below floors go. Throws Error InputOutput above 100 million points; what is
/// written out is charged to `limits`.
void MergeByLook(ExportModel& model, Budget& limits);

/// Charges writing out each placement of the scene to `limits`, with the points it keeps where
/// `keepsPoints` is set. Throws Error InputOutput above 100 million points.
void ChargePlacedPoints(const Scene& scene, Budget& limits, bool keepsPoints);

}  // namespace ZVSmartModel
