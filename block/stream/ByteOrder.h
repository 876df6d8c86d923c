#pragma once

#include <bit>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <type_traits>

#include "ZVSmartFormat/Stream.h"

// The one file that knows byte order: every number in a file is big-endian.

namespace ZVSmartFormat {

template <class Unsigned>
constexpr Unsigned SwapBytes(Unsigned value) {
    static_assert(std::is_unsigned_v<Unsigned>);
    if constexpr (sizeof(Unsigned) == 1) return value;
    if constexpr (sizeof(Unsigned) == 2) return __builtin_bswap16(value);
    if constexpr (sizeof(Unsigned) == 4) return __builtin_bswap32(value);
    if constexpr (sizeof(Unsigned) == 8) return __builtin_bswap64(value);
}

/// Between the host's order and big-endian, either way.
template <class Unsigned>
constexpr Unsigned ToBigEndian(Unsigned value) {
    if constexpr (std::endian::native == std::endian::big) return value;
    return SwapBytes(value);
}

template <class Unsigned>
Unsigned LoadBigEndian(const u8* bytes) {
    Unsigned value;
    std::memcpy(&value, bytes, sizeof value);
    return ToBigEndian(value);
}

/// Goes through elements that consist of numbers as wide as `Unsigned`, big-endian where they lie.
/// A list that is assigned from these is written once; one that is resized first, twice.
template <class Unsigned, class Element>
class BigEndianElements {
    static_assert(std::is_standard_layout_v<Element> &&
                  std::is_trivially_copy_constructible_v<Element> &&
                  sizeof(Element) % sizeof(Unsigned) == 0);

  public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = Element;
    using difference_type = std::ptrdiff_t;
    using pointer = const Element*;
    using reference = Element;

    explicit BigEndianElements(const u8* bytes) : bytes(bytes) {}

    Element operator*() const {
        Element element;
        auto* const out = reinterpret_cast<u8*>(&element);
        for (std::size_t i = 0; i < sizeof(Element); i += sizeof(Unsigned)) {
            const auto value = LoadBigEndian<Unsigned>(bytes + i);
            std::memcpy(out + i, &value, sizeof value);
        }
        return element;
    }
    BigEndianElements& operator++() {
        bytes += sizeof(Element);
        return *this;
    }
    BigEndianElements operator++(int) {
        const BigEndianElements before = *this;
        ++*this;
        return before;
    }
    bool operator==(const BigEndianElements& other) const = default;

  private:
    const u8* bytes;
};

template <class Unsigned>
void StoreBigEndian(Unsigned value, u8* bytes) {
    value = ToBigEndian(value);
    std::memcpy(bytes, &value, sizeof value);
}

}  // namespace ZVSmartFormat
