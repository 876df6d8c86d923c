#pragma once

#include <string>

#include "model/import/ImportReport.h"
#include "model/import/Model.h"
#include "model/import/ModelFile.h"

namespace ZVSmartModel {

/// Reads the mesh file `name` (glTF, OBJ, STL, PLY, FBX, Collada) and the files that it names,
/// through `open`. Each node that has triangles or lines becomes an element; the model has no
/// storeys. Straight lines are the only curves of these formats that are kept. glTF, Collada and
/// OBJ are turned from Y up to Z up, FBX where it says so; STL and PLY stay as they are. Throws
/// ImportError for what cannot be read or holds neither.
Model ImportMesh(const std::string& name, const OpenModelFile& open, const ImportReport& report);

}  // namespace ZVSmartModel
