#pragma once

#include "model/element/OpenedBlock.h"
#include "tools/zvg/text/Document.h"

namespace ZVSmartModel::Tool {

/// How many floors, components, geometry blocks, geometries and identifications a file holds.
/// Decodes every block; one that does not decode is remembered as the block's damage.
Document CountsDocument(OpenedBlock& block);

}  // namespace ZVSmartModel::Tool
