#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Element.h"

namespace ZVSmartModel::Web {

/// Writes one JSON text (RFC 8259), in the order of the calls; commas come by themselves.
class Json {
  public:
    Json& Open(char bracket);
    Json& Close(char bracket);
    Json& Key(std::string_view name);
    Json& Text(std::string_view utf8);
    Json& Number(std::uint64_t number);
    /// With the fewest digits that tell it from every other; null where it is not finite.
    Json& Real(double number);
    Json& Truth(bool value);
    Json& Null();

    const std::string& Written() const { return text; }

  private:
    void Separate();

    std::string text;
    bool isFirst = true;
};

/// All of an element as an object.
void Write(Json& json, const Element& element);
/// What is damaged, as an array.
void Write(Json& json, const std::vector<Damage>& damages);

/// What a call answers: a text, numbers as little-endian arrays, or both.
class Answer {
  public:
    void Clear() { bytes.clear(); }
    const std::vector<std::uint8_t>& Bytes() const { return bytes; }

    /// Makes room, so that as many bytes can be put without a copy.
    void Reserve(std::size_t byteCount) { bytes.reserve(byteCount); }
    void Put(std::string_view text) { Append(text.data(), text.size()); }
    /// Arrays begin at multiples of 8 bytes, so that each can be looked at in place.
    template <class Scalar>
    void PutArray(const Scalar* first, std::size_t count) {
        Append(first, count * sizeof(Scalar));
        bytes.resize((bytes.size() + 7) / 8 * 8);
    }
    template <class Scalar>
    void PutArray(const std::vector<Scalar>& numbers) {
        PutArray(numbers.data(), numbers.size());
    }

  private:
    void Append(const void* first, std::size_t byteCount);

    std::vector<std::uint8_t> bytes;
};

}  // namespace ZVSmartModel::Web
