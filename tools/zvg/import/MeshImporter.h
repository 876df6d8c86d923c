#pragma once

#include "tools/zvg/import/ImportReport.h"
#include "tools/zvg/import/Model.h"

/// Reads a mesh file (glTF, OBJ, STL, PLY, FBX, Collada) and the files beside it that it names.
/// Each node that has triangles or lines becomes an element; the model has no storeys. Straight
/// lines are the only curves of these formats that are kept. glTF, Collada and OBJ are turned from
/// Y up to Z up, FBX where it says so; STL and PLY stay as they are. Throws ImportError for what
/// cannot be read or holds neither.
Model ImportMesh(const char* path, const ImportReport& report);
