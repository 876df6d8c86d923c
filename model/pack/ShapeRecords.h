#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

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

/// What is told of a shape where it is placed.
struct ShapeSummary {
    std::wstring key;  ///< under which it is stored; empty while it is not
    /// Of the largest part that has a colour.
    /// @{
    std::optional<Rgba> colour;  ///< none where no part has one
    std::wstring styleName;
    std::size_t triangles = 0;
    /// @}
};
/// Without the key.
ShapeSummary SummaryOf(const ModelShape& shape);

/// An element's body as a geometry record: the keys of its shapes and where they are. `shapes` are
/// all that there are, by their numbers.
ZVSmartZvg::SZVLGZvgGeo PlacementRecord(const ModelElement& element,
                                        const std::vector<ShapeSummary>& shapes);

/// About how many bytes the record takes in a decoded block.
std::size_t ShapeRecordBytes(const ModelShape& shape);
std::size_t PlacementRecordBytes(const ModelElement& element);

/// How many of such records to put into a block: a block is what is decoded to get at one
/// geometry, large enough to compress well, small enough to decode at once. 0 for no records.
unsigned int GeosPerBlock(std::size_t recordBytes, std::size_t records);

}  // namespace ZVSmartModel
