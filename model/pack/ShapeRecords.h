#pragma once

#include <cstddef>
#include <optional>

#include "ZVSmartZvg/DisplayAttr.h"
#include "ZVSmartZvg/Geo.h"
#include "model/import/Model.h"

namespace ZVSmartModel {

/// The display attribute that stores `colour` in a file of format `version`; the default record
/// for none.
ZVSmartZvg::SZVLGZvgDisplayAttr ColourAttr(const std::optional<Rgba>& colour, unsigned int version);

/// A shape as a geometry record: what has no colour as shells, the rest as one sub-geometry per
/// colour with the colour and its style's name as display attribute. Then the curves, one
/// sub-geometry per set, whose name stands as the style's name.
ZVSmartZvg::SZVLGZvgGeo ShapeRecord(const ModelShape& shape, unsigned int version);

/// An element's body as a geometry record: the keys of its shapes and where they are.
ZVSmartZvg::SZVLGZvgGeo PlacementRecord(const ModelElement& element, const Model& model);

/// About how many bytes the record takes in a decoded block.
std::size_t ShapeRecordBytes(const ModelShape& shape);
std::size_t PlacementRecordBytes(const ModelElement& element);

}  // namespace ZVSmartModel
