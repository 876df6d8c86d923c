#pragma once

#include <cstdlib>
#include <utility>

#include "ZVSmartFormat/MemoryStream.h"

namespace ZVSmartFormat {

/// An AllocBuffer that frees its memory.
struct OwnedBuffer : AllocBuffer {
    OwnedBuffer() = default;
    ~OwnedBuffer() { std::free(data); }
    OwnedBuffer(OwnedBuffer&& other) noexcept
        : AllocBuffer(std::exchange(static_cast<AllocBuffer&>(other), {})) {}
    OwnedBuffer& operator=(OwnedBuffer&& other) noexcept {
        std::swap(data, other.data);
        std::swap(capacity, other.capacity);
        return *this;
    }
};

}  // namespace ZVSmartFormat
