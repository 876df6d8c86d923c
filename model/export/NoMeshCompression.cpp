#include <stdexcept>

#include "ZVSmartModel/Exports.h"
#include "model/export/MeshCompression.h"

namespace ZVSmartModel {

namespace {

using ByteList = std::vector<unsigned char>;

[[noreturn]] ByteList Missing() {
    throw std::logic_error("this build compresses no GLB");
}

}  // namespace

bool CanCompressGlb() {
    return false;
}

void OrderForCompression(SceneSurface&) {}

ByteList CompressedVertices(const ByteList&, std::size_t) {
    Missing();
}

ByteList CompressedTriangles(const std::vector<std::uint32_t>&) {
    Missing();
}

ByteList CompressedIndices(const std::vector<std::uint32_t>&) {
    Missing();
}

}  // namespace ZVSmartModel
