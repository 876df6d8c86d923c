#pragma once

#include "ZVSmartModel/Body.h"

namespace ZVSmartModel {

/// Leaves out triangles that have a corner twice, whose indices lead nowhere, or that have a
/// coordinate which is not finite or beyond `farthest`; then the points that no triangle uses.
void DropUndrawable(Triangles& surface);

/// Adds `part`, placed, behind what `whole` holds; triangles that are mirrored turn round, so that
/// what was outside stays outside. Looks and normals stay as they are.
void AddPlaced(Triangles& whole, const Triangles& part, const Transform& placement);

}  // namespace ZVSmartModel
