#pragma once

#include <string_view>

#include "ZVSmartFormat/StreamException.h"

// What the library throws, a text in one place each.

namespace ZVSmartFormat {

/// Data ran out, or a count or position cannot fit the data.
[[noreturn]] inline void ThrowOutOfData() {
    throw CZVFTStreamException("seek over buffer size");
}

/// Something could not be written.
[[noreturn]] inline void ThrowNotWritten() {
    throw CZVFTStreamException("encode error");
}

/// A buffer could not be allocated.
[[noreturn]] inline void ThrowNotAllocated() {
    throw CZVFTStreamException("bad malloc memory");
}

/// A buffer could not grow.
[[noreturn]] inline void ThrowNotGrown() {
    throw CZVFTStreamException("bad relloc memory");
}

/// Whether memory ran out, which says nothing about the data.
inline bool IsLackOfMemory(const CZVFTStreamException& exception) {
    const std::string_view text = exception.what();
    return text == "bad malloc memory" || text == "bad relloc memory";
}

/// Whether it is no block file of a version that is read, which is no damage either.
inline bool IsForeignFile(const CZVFTStreamException& exception) {
    const std::string_view text = exception.what();
    return text == "it's not zvg file format" || text == "it's upper zvg format";
}

}  // namespace ZVSmartFormat
