#include "model/export/MeshCompression.h"

#include <meshoptimizer.h>

#include <algorithm>
#include <utility>

#include "ZVSmartModel/Exports.h"

namespace ZVSmartModel {

namespace {

using IndexList = std::vector<std::uint32_t>;
using ByteList = std::vector<unsigned char>;

/// What the extension knows; later ones of the library are not for it.
void ChooseVersions() {
    static const bool chosen = [] {
        meshopt_encodeVertexVersion(0);
        meshopt_encodeIndexVersion(1);
        return true;
    }();
    static_cast<void>(chosen);
}

std::size_t HighestOf(const IndexList& indices) {
    return indices.empty() ? 0 : *std::max_element(indices.begin(), indices.end());
}

template <class Element>
void Reorder(std::vector<Element>& elements, const IndexList& remap) {
    if (elements.empty()) return;
    std::vector<Element> moved(elements.size());
    for (std::size_t i = 0; i < elements.size(); ++i) moved[remap[i]] = elements[i];
    elements = std::move(moved);
}

}  // namespace

bool CanCompressGlb() {
    return true;
}

void OrderForCompression(SceneSurface& surface) {
    auto& triangles = surface.triangles;
    IndexList indices;
    indices.reserve(triangles.size() * 3);
    for (const auto& triangle : triangles) {
        indices.insert(indices.end(), triangle.begin(), triangle.end());
    }
    IndexList ordered(indices.size());
    const std::size_t points = surface.points.size();
    meshopt_optimizeVertexCacheStrip(ordered.data(), indices.data(), indices.size(), points);
    IndexList remap(points);
    std::uint32_t next = static_cast<std::uint32_t>(
        meshopt_optimizeVertexFetchRemap(remap.data(), ordered.data(), ordered.size(), points));
    for (std::uint32_t& place : remap) {
        if (place == ~0U) place = next++;  // of no triangle
    }
    for (std::size_t i = 0; i < ordered.size(); ++i) triangles[i / 3][i % 3] = remap[ordered[i]];
    Reorder(surface.points, remap);
    Reorder(surface.normals, remap);
}

ByteList CompressedVertices(const ByteList& bytes, std::size_t stride) {
    const std::size_t count = bytes.size() / stride;
    ByteList compressed(meshopt_encodeVertexBufferBound(count, stride));
    ChooseVersions();
    compressed.resize(meshopt_encodeVertexBuffer(compressed.data(), compressed.size(), bytes.data(),
                                                 count, stride));
    return compressed;
}

ByteList CompressedTriangles(const IndexList& indices) {
    const std::size_t points = HighestOf(indices) + 1;
    ByteList compressed(meshopt_encodeIndexBufferBound(indices.size(), points));
    ChooseVersions();
    compressed.resize(meshopt_encodeIndexBuffer(compressed.data(), compressed.size(),
                                                indices.data(), indices.size()));
    return compressed;
}

ByteList CompressedIndices(const IndexList& indices) {
    const std::size_t points = HighestOf(indices) + 1;
    ByteList compressed(meshopt_encodeIndexSequenceBound(indices.size(), points));
    ChooseVersions();
    compressed.resize(meshopt_encodeIndexSequence(compressed.data(), compressed.size(),
                                                  indices.data(), indices.size()));
    return compressed;
}

}  // namespace ZVSmartModel
