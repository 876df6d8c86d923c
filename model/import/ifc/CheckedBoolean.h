#pragma once

#include <memory>

#include "model/import/ifc/BooleanCheck.h"

namespace ZVSmartModel {

/// Union, intersection or difference (A without B) of closed solids, in triangles. What the
/// library makes of them is checked; where it is wrong, the planes of B that coincide with
/// planes of A are moved by fractions of a millimetre, and it is made again. An empty result is a
/// solid without meshes. Null where nothing helps, or a solid is not closed. Neither is changed.
std::unique_ptr<Solid> CheckedBoolean(const Solid& a, const Solid& b, BooleanOperation operation);

std::unique_ptr<Solid> EmptySolid();

/// The surfaces of both, uncut.
std::unique_ptr<Solid> Together(const Solid& a, const Solid& b);

bool IsClosed(const Solid& solid);

/// Turns a solid over whose faces look inwards. Shells around a hollow look inwards rightly.
void TurnRightSideOut(Solid& solid);

}  // namespace ZVSmartModel
