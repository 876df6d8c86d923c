#pragma once

#include "ZVSmartModel/Body.h"
#include "model/element/Budget.h"

namespace ZVSmartModel {

/// Gives a surface the normals that `options` ask for. A point is repeated for each normal that it
/// has; triangles keep their order. Where there is no direction, for the corners lie on a line, it
/// is that of Z. What points of many directions take is charged to `limits`.
void AddNormals(Triangles& surface, const BodyOptions& options, Budget& limits);

}  // namespace ZVSmartModel
