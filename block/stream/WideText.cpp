#include "stream/WideText.h"

#include <bit>
#include <cstdint>
#include <cstring>

#include "stream/ByteOrder.h"

namespace ZVSmartFormat {

namespace {

constexpr bool wideIsUtf16 = sizeof(wchar_t) == 2;
constexpr u32 lastCharacter = 0x10FFFF;
constexpr u16 replacement = 0xFFFD;

constexpr bool IsHighSurrogate(u32 unit) {
    return (unit & 0xFFFFFC00) == 0xD800;
}
constexpr bool IsLowSurrogate(u32 unit) {
    return (unit & 0xFFFFFC00) == 0xDC00;
}
constexpr bool NeedsPair(u32 character) {
    return !wideIsUtf16 && character > 0xFFFF && character <= lastCharacter;
}

u8* StoreUnit(u32 unit, u8* bytes) {
    StoreBigEndian(static_cast<u16>(unit), bytes);
    return bytes + 2;
}

}  // namespace

u64 Utf16UnitCount(const std::wstring& text) {
    u64 count = text.size();
    for (const wchar_t wide : text) count += NeedsPair(static_cast<u32>(wide)) ? 1U : 0U;
    return count;
}

void StoreUtf16(const std::wstring& text, u8* bytes) {
    for (const wchar_t wide : text) {
        const u32 character = static_cast<u32>(wide);
        if (wideIsUtf16 || character <= 0xFFFF) {
            bytes = StoreUnit(character, bytes);
        } else if (NeedsPair(character)) {
            bytes = StoreUnit(0xD800 + ((character - 0x10000) >> 10), bytes);
            bytes = StoreUnit(0xDC00 + ((character - 0x10000) & 0x3FF), bytes);
        } else {
            bytes = StoreUnit(replacement, bytes);
        }
    }
}

void AppendUtf16(const std::wstring& text, std::string& bytes) {
    const std::size_t start = bytes.size();
    bytes.resize(start + 2 * static_cast<std::size_t>(Utf16UnitCount(text)));
    StoreUtf16(text, reinterpret_cast<u8*>(bytes.data() + start));
}

namespace {

/// Vectors of units, of the wide characters that they become and of what comparing them yields.
struct EightUnits {
    static constexpr std::size_t count = 8;
    using Units [[gnu::vector_size(8 * sizeof(u16))]] = u16;
    using Wide [[gnu::vector_size(8 * sizeof(wchar_t))]] = wchar_t;
    using Flags [[gnu::vector_size(8 * sizeof(u16))]] = std::int16_t;
};
struct FourUnits {
    static constexpr std::size_t count = 4;
    using Units [[gnu::vector_size(4 * sizeof(u16))]] = u16;
    using Wide [[gnu::vector_size(4 * sizeof(wchar_t))]] = wchar_t;
    using Flags [[gnu::vector_size(4 * sizeof(u16))]] = std::int16_t;
};

template <class Vector>
typename Vector::Flags LoadVector(const u8* bytes, wchar_t* out) {
    typename Vector::Units units;
    std::memcpy(&units, bytes, sizeof units);
    if constexpr (std::endian::native == std::endian::little) units = units << 8 | units >> 8;
    const auto wide = __builtin_convertvector(units, typename Vector::Wide);
    std::memcpy(out, &wide, sizeof wide);
    return (units & 0xF800) == 0xD800;
}

/// Loads at least a vector of units and says whether one is a surrogate. The last step goes
/// back, to end where the units end.
template <class Vector>
bool LoadVectors(const u8* bytes, std::size_t unitCount, wchar_t* out) {
    const std::size_t last = unitCount - Vector::count;
    typename Vector::Flags surrogates = LoadVector<Vector>(bytes + 2 * last, out + last);
    for (std::size_t i = 0; i < last; i += Vector::count)
        surrogates |= LoadVector<Vector>(bytes + 2 * i, out + i);
    bool any = false;
    for (std::size_t i = 0; i < Vector::count; ++i) any = any || surrogates[i] != 0;
    return any;
}

bool LoadUnits(const u8* bytes, std::size_t unitCount, wchar_t* out) {
    if (unitCount >= 8) return LoadVectors<EightUnits>(bytes, unitCount, out);
    if (unitCount >= 4) return LoadVectors<FourUnits>(bytes, unitCount, out);
    bool anySurrogate = false;
    for (std::size_t i = 0; i < unitCount; ++i) {
        const u32 unit = LoadBigEndian<u16>(bytes + 2 * i);
        anySurrogate = anySurrogate || (unit & 0xF800) == 0xD800;
        out[i] = static_cast<wchar_t>(unit);
    }
    return anySurrogate;
}

}  // namespace

void LoadUtf16(const u8* bytes, u64 unitCount, std::wstring& text) {
    if (unitCount > text.capacity()) text.clear();  // or its old characters move along
    text.resize(static_cast<std::size_t>(unitCount));
    const bool anySurrogate = LoadUnits(bytes, text.size(), text.data());
    if (wideIsUtf16 || !anySurrogate) return;

    std::size_t kept = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        u32 character = static_cast<u32>(text[i]);
        if (IsHighSurrogate(character) && i + 1 < text.size() &&
            IsLowSurrogate(static_cast<u32>(text[i + 1]))) {
            ++i;
            character =
                0x10000 + ((character - 0xD800) << 10) + (static_cast<u32>(text[i]) - 0xDC00);
        }
        text[kept++] = static_cast<wchar_t>(character);
    }
    text.resize(kept);
}

}  // namespace ZVSmartFormat
