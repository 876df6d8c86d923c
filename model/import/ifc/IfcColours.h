#pragma once

#include <optional>

#include "model/import/Model.h"

class IfcSurfaceStyle;

namespace ZVSmartModel {

/// The colour of a surface style, as its shading gives it: black is black, and white is white.
/// The factors that a rendering adds tell how much light a surface throws back, not which colour
/// it has; programs that draw such models leave them out as well. What is hardly there, less than
/// a tenth opaque, becomes that, so that it is seen at all.
std::optional<Rgba> ColourOf(const IfcSurfaceStyle& style);

}  // namespace ZVSmartModel
