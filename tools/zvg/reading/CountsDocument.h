#pragma once

#include "tools/zvg/reading/OpenedBlock.h"
#include "tools/zvg/text/Document.h"

/// How many floors, components, geometry blocks, geometries and identifications a file holds.
/// Decodes every block; one that does not decode is remembered as the block's damage.
Document CountsDocument(OpenedBlock& block);
