#include "stream/WideText.h"

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

void LoadUtf16(const u8* bytes, u64 unitCount, std::wstring& text) {
    text.resize(static_cast<std::size_t>(unitCount));
    wchar_t* out = text.data();
    u32 anySurrogate = 0;
    for (u64 i = 0; i < unitCount; ++i) {
        const u32 unit = LoadBigEndian<u16>(bytes + 2 * i);
        anySurrogate |= (unit & 0xF800) == 0xD800 ? 1U : 0U;
        out[i] = static_cast<wchar_t>(unit);
    }
    if (wideIsUtf16 || anySurrogate == 0) return;

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
