#pragma once

#include <string>

#include "model/import/ImportReport.h"
#include "model/import/Model.h"
#include "model/import/ModelFile.h"

namespace ZVSmartModel {

/// Reads the mesh file `name` (glTF, OBJ, STL, PLY, FBX, Collada) and the files that it names,
/// through `open`. AddElements says what becomes of its nodes. Straight lines are the only curves
/// of these formats that are kept; textures and colours of points become their means. Lengths
/// become metres and Z is up as the format or the file says; OBJ is taken as metres with Y up, STL
/// and PLY as metres with Z up. What is left out is told in the model's findings. Throws
/// ImportError for what cannot be read or holds neither triangle nor line.
Model ImportMesh(const std::string& name, const OpenModelFile& open, const ImportReport& report);

}  // namespace ZVSmartModel
