#pragma once

#include <new>
#include <string_view>

#include "ZVSmartFormat/StreamException.h"

// What the library throws, a text in one place each.

namespace ZVSmartFormat {

/// The six texts (StreamException.h).
namespace Failure {

constexpr const char* foreignFile = "it's not zvg file format";
constexpr const char* newerVersion = "it's upper zvg format";
constexpr const char* notWritten = "encode error";
constexpr const char* outOfData = "seek over buffer size";
constexpr const char* notAllocated = "bad malloc memory";
constexpr const char* notGrown = "bad relloc memory";

}  // namespace Failure

/// Data ran out, or a count or position cannot fit the data.
[[noreturn]] inline void ThrowOutOfData() {
    throw CZVFTStreamException(Failure::outOfData);
}

/// A record takes more memory than it may; to a host it is the same as above.
class ZVFT_LOCAL OverLimit final : public CZVFTStreamException {
  public:
    OverLimit() : CZVFTStreamException(Failure::outOfData) {}
};

/// Something could not be written.
[[noreturn]] inline void ThrowNotWritten() {
    throw CZVFTStreamException(Failure::notWritten);
}

/// A buffer could not be allocated. Takes no memory itself.
[[noreturn]] void ThrowNotAllocated();

/// A buffer could not grow. Takes no memory itself.
[[noreturn]] void ThrowNotGrown();

/// Runs `act`; memory that runs out in the standard library is told as the library's own.
template <class Act>
auto WithOwnException(Act act) {
    try {
        return act();
    } catch (const std::bad_alloc&) {
        ThrowNotAllocated();
    }
}

/// Whether memory ran out, which says nothing about the data.
inline bool IsLackOfMemory(const CZVFTStreamException& exception) {
    const std::string_view text = exception.what();
    return text == Failure::notAllocated || text == Failure::notGrown;
}

/// Whether it is no block file of a version that is read, which is no damage either.
inline bool IsForeignFile(const CZVFTStreamException& exception) {
    const std::string_view text = exception.what();
    return text == Failure::foreignFile || text == Failure::newerVersion;
}

}  // namespace ZVSmartFormat
