#pragma once

#include <bit>
#include <cstring>
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

/// `byteCount` bytes of numbers as wide as `Unsigned`, to `values`, whatever their own type.
template <class Unsigned>
void LoadBigEndianArray(const u8* bytes, u64 byteCount, void* values) {
    auto* const out = static_cast<u8*>(values);
    for (u64 i = 0; i < byteCount; i += sizeof(Unsigned)) {
        const auto value = LoadBigEndian<Unsigned>(bytes + i);
        std::memcpy(out + i, &value, sizeof value);
    }
}

template <class Unsigned>
void StoreBigEndian(Unsigned value, u8* bytes) {
    value = ToBigEndian(value);
    std::memcpy(bytes, &value, sizeof value);
}

}  // namespace ZVSmartFormat
