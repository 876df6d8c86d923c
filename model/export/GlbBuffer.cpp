#include "model/export/GlbBuffer.h"

#include <cstring>

#include "ZVSmartModel/Error.h"
#include "model/export/MeshCompression.h"

namespace ZVSmartModel {

using nlohmann::json;

namespace {

constexpr std::uint64_t mostBytes = 0xFFFFFFFFULL - (64 << 20);  // leaves room for the nodes
constexpr const char* compression = "EXT_meshopt_compression";

void PadToFour(std::vector<unsigned char>& bytes) {
    while (bytes.size() % 4 != 0) bytes.push_back(0);
}

void Check(std::uint64_t bytes) {
    if (bytes <= mostBytes) return;
    throw Error(Status::InputOutput, "the model is too large for one GLB file");
}

std::vector<std::uint32_t> IndicesOf(const std::vector<unsigned char>& bytes, std::size_t size) {
    std::vector<std::uint32_t> indices(bytes.size() / size);
    for (std::size_t i = 0; i < indices.size(); ++i) {
        std::uint16_t narrow = 0;
        if (size == sizeof narrow) {
            std::memcpy(&narrow, &bytes[i * size], size);
            indices[i] = narrow;
        } else {
            std::memcpy(&indices[i], &bytes[i * size], size);
        }
    }
    return indices;
}

}  // namespace

int JsonElements::Add(const json& element) {
    if (count != 0) text += ",\n";
    text += element.dump(-1, ' ', false, json::error_handler_t::replace);
    return count++;
}

void GlbBuffer::BeginView(GlbUse wanted, std::size_t bytesOfElement) {
    use = wanted;
    stride = bytesOfElement;
    view.clear();
}

int GlbBuffer::AddBytes(const char* type, GlbNumber number, const void* first, std::size_t count,
                        std::size_t size, json more) {
    Check(view.size() + std::uint64_t{count} * size);
    more["bufferView"] = views.Count();
    more["byteOffset"] = view.size();
    more["type"] = type;
    more["componentType"] = static_cast<int>(number);
    more["count"] = count;
    const auto* const from = static_cast<const unsigned char*>(first);
    view.insert(view.end(), from, from + count * size);
    return accessors.Add(more);
}

std::vector<unsigned char> GlbBuffer::Compressed() const {
    if (use == GlbUse::Triangles) return CompressedTriangles(IndicesOf(view, stride));
    if (use == GlbUse::Lines) return CompressedIndices(IndicesOf(view, stride));
    return CompressedVertices(view, stride);
}

void GlbBuffer::EndView() {
    if (view.empty()) return;
    const bool isVertices = use == GlbUse::Vertices;
    json said = {{"buffer", 0}, {"byteOffset", bytes.size()}, {"byteLength", view.size()}};
    if (isVertices) said["byteStride"] = stride;
    if (use != GlbUse::Values) {
        const GlbUse target = use == GlbUse::Lines ? GlbUse::Triangles : use;
        said["target"] = static_cast<int>(target);
    }
    if (compressed) {
        const std::vector<unsigned char> packed = Compressed();
        said["buffer"] = 1;
        said["byteOffset"] = decodedBytes;
        said["extensions"][compression] = {{"buffer", 0},
                                           {"byteOffset", bytes.size()},
                                           {"byteLength", packed.size()},
                                           {"byteStride", stride},
                                           {"count", view.size() / stride},
                                           {"mode", use == GlbUse::Triangles ? "TRIANGLES"
                                                    : use == GlbUse::Lines   ? "INDICES"
                                                                             : "ATTRIBUTES"}};
        PadToFour(view);
        decodedBytes += view.size();
        Check(decodedBytes);
        view = packed;
    }
    bytes.insert(bytes.end(), view.begin(), view.end());
    PadToFour(bytes);
    Check(bytes.size());
    views.Add(said);
    view.clear();
}

JsonElements GlbBuffer::Buffers() const {
    JsonElements buffers;
    if (!bytes.empty()) buffers.Add({{"byteLength", bytes.size()}});
    if (decodedBytes != 0) {
        buffers.Add(
            {{"byteLength", decodedBytes}, {"extensions", {{compression, {{"fallback", true}}}}}});
    }
    return buffers;
}

}  // namespace ZVSmartModel
