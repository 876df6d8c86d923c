#pragma once

#include "ZVSmartFormat/Stream.h"
#include "model/export/ExportModel.h"

namespace ZVSmartModel {

/// Whether this build writes GLB.
bool CanWriteGlb();

/// Writes the model as binary glTF 2.0: a node per group and component, whose names and extras go
/// with them; meshes that are placed several times stand once, and so do surfaces that differ in
/// looks alone. The root turns Z up into Y up; lengths stay as they are. Surfaces have no normals,
/// which makes viewers shade them flat. Throws Error InputOutput for more than a GLB file
/// holds (4 GiB); a stream that fails is the caller's to ask.
void WriteGlb(const ExportModel& model, ZVSmartFormat::CZVFTOutStream& out);

}  // namespace ZVSmartModel
