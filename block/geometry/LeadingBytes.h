#pragma once

#include <string_view>

#include "stream/ByteOrder.h"

namespace ZVSmartZvg {

/// Eight bytes of `key` from `first` on as a number, zeros behind its end: where keys agree up to
/// `first`, the numbers never contradict their order, and tell most keys apart without a look at
/// where they lie.
inline u64 LeadingBytes(std::string_view key, std::size_t first) {
    u8 bytes[sizeof(u64)] = {};
    if (key.size() > first) key.copy(reinterpret_cast<char*>(bytes), sizeof bytes, first);
    return ZVSmartFormat::LoadBigEndian<u64>(bytes);
}

/// How many bytes two keys begin with alike.
inline std::size_t CommonBytes(std::string_view a, std::string_view b) {
    std::size_t count = 0;
    while (count < a.size() && count < b.size() && a[count] == b[count]) ++count;
    return count;
}

}  // namespace ZVSmartZvg
