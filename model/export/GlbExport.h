#pragma once

#include "ZVSmartFormat/Stream.h"
#include "model/element/ProgressPace.h"
#include "model/export/ExportModel.h"

namespace ZVSmartModel {

/// Writes the model as binary glTF 2.0: a node per group and component, whose names and extras go
/// with them; meshes that are placed several times stand once, and so do surfaces that differ in
/// looks alone. The root turns Z up into Y up; lengths stay as they are. Surfaces go as they are
/// prepared; of `options`, how numbers are stored and nodes are shared matters here. Throws Error
/// InputOutput for more than a GLB file holds (4 GiB), and where `out` does not take it; Cancelled.
void EncodeGlb(const ExportModel& model, const ExportOptions& options,
               ZVSmartFormat::CZVFTOutStream& out, ProgressPace& pace);

}  // namespace ZVSmartModel
