#pragma once

#include <string>

#include "ZVSmartFormat/Stream.h"
#include "model/export/ExportModel.h"

namespace ZVSmartModel {

/// Writes the model as Wavefront OBJ, Y up as most programs take it: an object per component,
/// named by its floor, class and name; triangles only. OBJ places nothing, so each placement is
/// written out. `materialFile` is the name of the file that WriteMtl fills. Throws Error
/// InputOutput above 100 million points; writing them is charged to `limits` before it begins.
void WriteObj(const ExportModel& model, const std::string& materialFile, Budget& limits,
              ZVSmartFormat::CZVFTOutStream& out);

/// Writes the colours that go with WriteObj.
void WriteMtl(const ExportModel& model, ZVSmartFormat::CZVFTOutStream& out);

}  // namespace ZVSmartModel
