#pragma once

#include <array>

#include "ZVSmartFormat/Stream.h"

namespace ZVSmartZvg {

/// The CRC-64 of .xz (ECMA-182, reflected) of bytes that come one after another, some of which
/// change later.
class Crc64 {
  public:
    using u8 = ZVSmartFormat::u8;
    using u64 = ZVSmartFormat::u64;

    void Append(const u8* bytes, u64 byteCount) { state = After(state, bytes, byteCount); }

    /// Zeros that were appended become `bytes`; `bytesBehind` were appended behind them.
    ///
    /// A CRC is a remainder of polynomials, hence linear: the change by itself, moved on by as
    /// many zeros as bytes follow it, is added to the remainder of the whole.
    void ReplaceZeros(const u8* bytes, u64 byteCount, u64 bytesBehind) {
        state ^= Product(After(0, bytes, byteCount), PowerOfByte(bytesBehind));
    }

    u64 Value() const { return ~state; }

  private:
    static constexpr u64 polynomial = 0xC96C5795D7870F42;
    static constexpr u64 one = u64{1} << 63;  // reflected: the highest bit is the constant term

    static constexpr u64 TimesX(u64 a) { return (a & 1) != 0 ? a >> 1 ^ polynomial : a >> 1; }

    static constexpr u64 Product(u64 a, u64 b) {
        u64 product = 0;
        for (; a != 0; a <<= 1) {
            if ((a & one) != 0) product ^= b;
            b = TimesX(b);
        }
        return product;
    }
    /// What a zero byte multiplies a remainder by, to the power of `byteCount`.
    static constexpr u64 PowerOfByte(u64 byteCount) {
        u64 power = one;
        for (u64 square = one >> 8; byteCount != 0; byteCount >>= 1) {
            if ((byteCount & 1) != 0) power = Product(power, square);
            square = Product(square, square);
        }
        return power;
    }
    static constexpr std::array<u64, 256> MakeTable() {
        std::array<u64, 256> made = {};
        for (u64 byte = 0; byte < made.size(); ++byte) {
            made[byte] = byte;
            for (int bit = 0; bit < 8; ++bit) made[byte] = TimesX(made[byte]);
        }
        return made;
    }
    static u64 After(u64 before, const u8* bytes, u64 byteCount) {
        static constexpr std::array<u64, 256> table = MakeTable();
        for (const u8* const end = bytes + byteCount; bytes != end; ++bytes)
            before = before >> 8 ^ table[(before ^ *bytes) & 0xFF];
        return before;
    }

    u64 state = ~u64{0};
};

}  // namespace ZVSmartZvg
