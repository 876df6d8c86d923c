#pragma once

#include <string>

#include "tools/zvg/import/ImportReport.h"
#include "tools/zvg/import/Model.h"
#include "tools/zvg/import/ModelFile.h"

/// Reads the mesh file `name` (glTF, OBJ, STL, PLY, FBX, Collada) and the files that it names,
/// through `open`. Each node that has triangles or lines becomes an element; the model has no
/// storeys. Straight lines are the only curves of these formats that are kept. glTF, Collada and
/// OBJ are turned from Y up to Z up, FBX where it says so; STL and PLY stay as they are. Throws
/// ImportError for what cannot be read or holds neither.
Model ImportMesh(const std::string& name, const OpenModelFile& open, const ImportReport& report);
