#include "model/element/Utf8.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace ZVSmartModel {

namespace {

constexpr char32_t replacementCharacter = 0xFFFD;

bool IsHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
bool IsLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

bool IsCharacter(char32_t value) {
    return value <= 0x10FFFF && !IsHighSurrogate(value) && !IsLowSurrogate(value);
}

/// Returns where the character ends.
char* StoreUtf8(char32_t character, char* to) {
    const auto byte = [&to](char32_t value) { *to++ = static_cast<char>(value); };
    if (character < 0x80) {
        byte(character);
    } else if (character < 0x800) {
        byte(0xC0 | (character >> 6));
        byte(0x80 | (character & 0x3F));
    } else if (character < 0x10000) {
        byte(0xE0 | (character >> 12));
        byte(0x80 | ((character >> 6) & 0x3F));
        byte(0x80 | (character & 0x3F));
    } else {
        byte(0xF0 | (character >> 18));
        byte(0x80 | ((character >> 12) & 0x3F));
        byte(0x80 | ((character >> 6) & 0x3F));
        byte(0x80 | (character & 0x3F));
    }
    return to;
}

void AppendUtf8(std::string& out, char32_t character) {
    char bytes[4];
    out.append(bytes, StoreUtf8(character, bytes));
}

/// The character that begins at unit `i`, which becomes the number of the last unit it takes.
template <class UnitAt>
char32_t CharacterAt(std::size_t& i, std::size_t count, UnitAt unitAt) {
    const char32_t unit = unitAt(i);
    if (IsHighSurrogate(unit) && i + 1 < count && IsLowSurrogate(unitAt(i + 1))) {
        return 0x10000 + ((unit - 0xD800) << 10) + (unitAt(++i) - 0xDC00);
    }
    return IsCharacter(unit) ? unit : replacementCharacter;
}

/// Vectors of units as they are stored, and of their lower bytes.
struct EightStored {
    static constexpr std::size_t count = 8;
    using Units [[gnu::vector_size(8 * sizeof(std::uint16_t))]] = std::uint16_t;
    using Bytes [[gnu::vector_size(8)]] = std::uint8_t;
};
struct FourStored {
    static constexpr std::size_t count = 4;
    using Units [[gnu::vector_size(4 * sizeof(std::uint16_t))]] = std::uint16_t;
    using Bytes [[gnu::vector_size(4)]] = std::uint8_t;
};

/// Stores a vector of units as bytes, and says whether all are ASCII.
template <class Vector>
bool StoreAscii(const std::uint8_t* units, char* to) {
    typename Vector::Units stored;
    std::memcpy(&stored, units, sizeof stored);
    if constexpr (std::endian::native == std::endian::little) stored = stored << 8 | stored >> 8;
    const auto bytes = __builtin_convertvector(stored, typename Vector::Bytes);
    std::memcpy(to, &bytes, sizeof bytes);
    std::uint64_t words[sizeof stored / sizeof(std::uint64_t)];
    std::memcpy(words, &stored, sizeof stored);
    std::uint64_t all = 0;
    for (const std::uint64_t word : words) all |= word;
    return (all & 0xFF80FF80FF80FF80) == 0;
}

/// The same of a whole text; the last step goes back, to end where the text ends.
template <class Vector>
bool StoreVectors(const std::uint8_t* units, std::size_t unitCount, char* to) {
    const std::size_t last = unitCount - Vector::count;
    bool isAscii = true;
    for (std::size_t i = 0; i < last; i += Vector::count)
        isAscii &= StoreAscii<Vector>(units + 2 * i, to + i);
    return StoreAscii<Vector>(units + 2 * last, to + last) && isAscii;
}

bool StoreAllAscii(const std::uint8_t* units, std::size_t unitCount, char* to) {
    if (unitCount >= 8) return StoreVectors<EightStored>(units, unitCount, to);
    if (unitCount >= 4) return StoreVectors<FourStored>(units, unitCount, to);
    bool isAscii = true;
    for (std::size_t i = 0; i < unitCount; ++i) {
        to[i] = static_cast<char>(units[2 * i + 1]);
        isAscii = isAscii && units[2 * i] == 0 && units[2 * i + 1] < 0x80;
    }
    return isAscii;
}

/// Most texts are ASCII. Appends nothing of use and is false where one is not.
bool AppendAscii(std::string& out, std::wstring_view text) {
    const std::size_t start = out.size();
    out.resize(start + text.size());
    char* const to = out.data() + start;
    std::uint32_t seen = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        seen |= static_cast<std::uint32_t>(text[i]);
        to[i] = static_cast<char>(text[i]);
    }
    return seen < 0x80;
}

/// Takes one character off the front of `text`, which is not empty. A first byte that begins no
/// well-formed sequence counts as one U+FFFD.
char32_t TakeCharacter(std::string_view& text) {
    const auto byteAt = [&text](std::size_t i) {
        return static_cast<char32_t>(static_cast<std::uint8_t>(text[i]));
    };
    const char32_t first = byteAt(0);
    const std::size_t length = first < 0x80                     ? 1
                               : first >= 0xC2 && first <= 0xDF ? 2
                               : first >= 0xE0 && first <= 0xEF ? 3
                               : first >= 0xF0 && first <= 0xF4 ? 4
                                                                : 0;
    constexpr char32_t payloadMask[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    constexpr char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    bool good = length != 0 && length <= text.size();
    char32_t character = good ? first & payloadMask[length] : 0;
    for (std::size_t i = 1; good && i < length; ++i) {
        good = (byteAt(i) & 0xC0) == 0x80;
        character = (character << 6) | (byteAt(i) & 0x3F);
    }
    const bool malformed = !good || character < smallest[length] || !IsCharacter(character);
    text.remove_prefix(malformed ? 1 : length);
    return malformed ? replacementCharacter : character;
}

/// Whether a character moves the cursor, ends a line or turns the direction of writing.
bool IsUnsafeOnTerminal(char32_t character) {
    return character < 0x20 || (character >= 0x7F && character < 0xA0) || character == 0x061C ||
           character == 0x200E || character == 0x200F ||
           (character >= 0x2028 && character <= 0x202E) ||
           (character >= 0x2066 && character <= 0x2069);
}

void AppendEscape(std::string& out, char32_t character) {
    switch (character) {
        case U'\n':
            out += "\\n";
            return;
        case U'\r':
            out += "\\r";
            return;
        case U'\t':
            out += "\\t";
            return;
        default:
            break;
    }
    constexpr char digits[] = "0123456789ABCDEF";
    out += character < 0x100 ? "\\x" : "\\u";
    for (int shift = character < 0x100 ? 4 : 12; shift >= 0; shift -= 4) {
        out += digits[character >> shift & 0xF];
    }
}

}  // namespace

std::string ToUtf8(std::wstring_view text) {
    std::string out;
    AppendUtf8(out, text);
    return out;
}

void AppendUtf8(std::string& out, std::wstring_view text) {
    const std::size_t start = out.size();
    if (AppendAscii(out, text)) return;
    out.resize(start);
    const auto unitAt = [text](std::size_t i) { return static_cast<char32_t>(text[i]); };
    for (std::size_t i = 0; i < text.size(); ++i) {
        AppendUtf8(out, CharacterAt(i, text.size(), unitAt));
    }
}

char* StoreUtf8(const ZVSmartZvg::SZVLGTextView& text, char* to) {
    if (StoreAllAscii(text.units, text.unitCount, to)) return to + text.unitCount;
    const auto unitAt = [&text](std::size_t i) {
        return static_cast<char32_t>(text.units[2 * i] << 8 | text.units[2 * i + 1]);
    };
    for (std::size_t i = 0; i < text.unitCount; ++i) {
        to = StoreUtf8(CharacterAt(i, text.unitCount, unitAt), to);
    }
    return to;
}

void AppendUtf8(std::string& out, const ZVSmartZvg::SZVLGTextView& text) {
    const std::size_t start = out.size();
    out.resize(start + 3 * std::size_t{text.unitCount} + 8);
    const char* const end = StoreUtf8(text, out.data() + start);
    out.resize(static_cast<std::size_t>(end - out.data()));
}

std::wstring WideText(const ZVSmartZvg::SZVLGTextView& text) {
    std::wstring wide;
    wide.reserve(text.unitCount);
    const auto unitAt = [&text](std::size_t i) {
        return static_cast<char32_t>(text.units[2 * i] << 8 | text.units[2 * i + 1]);
    };
    for (std::size_t i = 0; i < text.unitCount; ++i) {
        const char32_t unit = unitAt(i);
        const bool isPair = sizeof(wchar_t) != 2 && IsHighSurrogate(unit) &&
                            i + 1 < text.unitCount && IsLowSurrogate(unitAt(i + 1));
        wide.push_back(
            static_cast<wchar_t>(isPair ? CharacterAt(i, text.unitCount, unitAt) : unit));
    }
    return wide;
}

std::wstring FromUtf8(std::string_view text) {
    std::wstring out;
    out.reserve(text.size());
    while (!text.empty()) {
        const char32_t character = TakeCharacter(text);
        if (sizeof(wchar_t) == 2 && character > 0xFFFF) {
            out.push_back(static_cast<wchar_t>(0xD800 + ((character - 0x10000) >> 10)));
            out.push_back(static_cast<wchar_t>(0xDC00 + ((character - 0x10000) & 0x3FF)));
        } else {
            out.push_back(static_cast<wchar_t>(character));
        }
    }
    return out;
}

std::string EscapeControls(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const char32_t character = TakeCharacter(text);
        if (IsUnsafeOnTerminal(character)) {
            AppendEscape(out, character);
        } else {
            AppendUtf8(out, character);
        }
    }
    return out;
}

}  // namespace ZVSmartModel
