#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <type_traits>
#include <vector>

namespace ZVSmartModel {

/// The elements of an array of JSON, as text: a model has many.
class JsonElements {
  public:
    /// Returns the element's number.
    int Add(const nlohmann::json& element);
    int Count() const { return count; }
    std::string Array() const { return '[' + text + ']'; }

  private:
    std::string text;
    int count = 0;
};

/// glTF's numbers of component types and of what a view is for.
/// @{
enum class GlbNumber {
    Byte = 5120,
    Short = 5122,
    UnsignedShort = 5123,
    UnsignedInt = 5125,
    Float = 5126
};
enum class GlbUse { Vertices = 34962, Triangles = 34963, Lines = 0, Values = 1 };
/// @}

/// The binary chunk of a GLB file with the views and accessors of it, one view for all data of a
/// kind, each in turn. Compressed, a view tells of a second buffer that is nowhere, and its
/// extension of the compressed bytes.
class GlbBuffer {
  public:
    explicit GlbBuffer(bool compressed) : compressed(compressed) {}

    /// Begins a view whose elements take `stride` bytes.
    void BeginView(GlbUse use, std::size_t stride);
    /// Ends it; one of nothing is not written. Throws Error InputOutput above what a file holds.
    void EndView();

    /// Adds elements to the view, as they lie in memory, and returns the number of their accessor;
    /// `more` holds what else it says.
    template <class Element>
    int Add(const char* type, GlbNumber number, const std::vector<Element>& elements,
            nlohmann::json more = nlohmann::json::object()) {
        static_assert(std::is_trivially_copyable_v<Element>);
        return AddBytes(type, number, elements.data(), elements.size(), sizeof(Element),
                        std::move(more));
    }

    const std::vector<unsigned char>& Bytes() const { return bytes; }
    const JsonElements& Accessors() const { return accessors; }
    const JsonElements& Views() const { return views; }
    /// The buffers that the views speak of.
    JsonElements Buffers() const;

  private:
    int AddBytes(const char* type, GlbNumber number, const void* first, std::size_t count,
                 std::size_t size, nlohmann::json more);
    std::vector<unsigned char> Compressed() const;

    bool compressed;
    GlbUse use = GlbUse::Vertices;
    std::size_t stride = 0;
    std::vector<unsigned char> view;  ///< what is in it so far
    std::vector<unsigned char> bytes;
    std::uint64_t decodedBytes = 0;  ///< of the buffer that is nowhere
    JsonElements accessors, views;
};

}  // namespace ZVSmartModel
