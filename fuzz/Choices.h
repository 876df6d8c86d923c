#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>

#include "support.h"

namespace support {

/// Hands the input out piece by piece; zeros behind its end.
class Choices {
  public:
    Choices(const u8* data, std::size_t size) : data(data), left(size) {}

    bool AnyLeft() const { return left != 0; }
    u8 Byte() {
        if (left == 0) return 0;
        --left;
        return *data++;
    }
    u32 Number() { return Byte() * 0x01000193U ^ Byte(); }
    double Real() {
        const u64 bits = u64{Number()} << 40 ^ Number();
        double value;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }
    /// Units of UTF-16, so that what is written can come back the same.
    std::wstring Text() {
        std::wstring text;
        for (u8 length = Byte() % 6; length != 0; --length)
            text += static_cast<wchar_t>(Byte() << 3 ^ 'a');
        return text;
    }

  private:
    const u8* data;
    std::size_t left;
};

inline void Require(bool condition) {
    if (!condition) std::abort();
}

}  // namespace support
