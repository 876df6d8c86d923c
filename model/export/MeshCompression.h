#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "model/scene/Scene.h"

namespace ZVSmartModel {

// The bit streams of EXT_meshopt_compression. Without the library for it, CanCompressGlb is false,
// surfaces stay as they are, and nothing else may be called.

/// Reorders triangles so that neighbours follow each other, and points so that they come in the
/// order of their first use.
void OrderForCompression(SceneSurface& surface);

/// `bytes` as elements of `stride` bytes, a multiple of 4 up to 256.
std::vector<unsigned char> CompressedVertices(const std::vector<unsigned char>& bytes,
                                              std::size_t stride);

/// Triples of indices. Decoded, a triangle may begin at another of its corners.
std::vector<unsigned char> CompressedTriangles(const std::vector<std::uint32_t>& indices);

/// Indices of any number.
std::vector<unsigned char> CompressedIndices(const std::vector<std::uint32_t>& indices);

}  // namespace ZVSmartModel
