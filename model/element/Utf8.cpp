#include "model/element/Utf8.h"

#include <cstdint>
#include <cstdio>

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

void AppendUtf8(std::string& out, char32_t character) {
    const auto byte = [&out](char32_t value) { out.push_back(static_cast<char>(value)); };
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
    char digits[16];
    std::snprintf(digits, sizeof digits, character < 0x100 ? "\\x%02X" : "\\u%04X",
                  static_cast<unsigned int>(character));
    out += digits;
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
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto character = static_cast<char32_t>(text[i]);
        const bool pair = IsHighSurrogate(character) && i + 1 < text.size() &&
                          IsLowSurrogate(static_cast<char32_t>(text[i + 1]));
        if (pair) {
            const auto low = static_cast<char32_t>(text[++i]);
            character = 0x10000 + ((character - 0xD800) << 10) + (low - 0xDC00);
        }
        AppendUtf8(out, IsCharacter(character) ? character : replacementCharacter);
    }
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
