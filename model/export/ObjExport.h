#pragma once

#include <string>

#include "ZVSmartFormat/Stream.h"
#include "model/element/ProgressPace.h"
#include "model/export/ExportModel.h"

namespace ZVSmartModel {

/// Writes the model as Wavefront OBJ, Y up as most programs take it: an object per component,
/// named by its floor, class and name; triangles only. OBJ places nothing, so each placement is
/// written out. `materialFile` is the name of the file that EncodeMtl fills. Throws Error
/// InputOutput above 100 million points, and where `out` does not take them; Cancelled. Writing
/// them is charged to `limits` before it begins.
void EncodeObj(const ExportModel& model, const std::string& materialFile, Budget& limits,
               ZVSmartFormat::CZVFTOutStream& out, ProgressPace& pace);

/// Writes the colours that go with EncodeObj.
void EncodeMtl(const ExportModel& model, ZVSmartFormat::CZVFTOutStream& out);

}  // namespace ZVSmartModel
