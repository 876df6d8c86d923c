#include "tools/zvg/import/StepText.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>

#include "tools/zvg/text/Utf8.h"

namespace {

/// The characters that a reader may take for punctuation although they stand in a string. Their
/// placeholders are the noncharacters U+FDD0 and following, which no text holds.
constexpr std::string_view maskedCharacters = "'\\/(),;";
constexpr char32_t firstPlaceholder = 0xFDD0;

/// Rewrites one file; `at` is what comes next.
class Rewriter {
  public:
    explicit Rewriter(std::string_view source) : source(source) {
        result.text.reserve(source.size() + source.size() / 8);
    }

    StepText Run() {
        while (at < source.size()) {
            if (source[at] == '\'') {
                RewriteString();
            } else if (Ahead("/*")) {
                SkipComment();
            } else {
                CopyCharacter();
            }
        }
        return std::move(result);
    }

  private:
    bool Ahead(std::string_view word) const { return source.substr(at, word.size()) == word; }

    void SkipComment() {
        const std::size_t end = source.find("*/", at + 2);
        at = end == std::string_view::npos ? source.size() : end + 2;
        result.text += ' ';
    }

    void CopyCharacter() {
        switch (source[at]) {
            case '#':
                CheckEntityNumber();
                break;
            case 'F':
                if (Ahead("FILE_SCHEMA")) inSchema = true;
                break;
            case 'D':
                if (Ahead("DATA;") || Ahead("DATA(") || Ahead("DATA ")) inData = true;
                break;
            case 'E':
                if (Ahead("ENDSEC")) result.dataEnds = inData;
                break;
            default:
                break;
        }
        result.text += source[at++];
    }

    void CheckEntityNumber() {
        std::int32_t number = 0;
        const char* first = source.data() + at + 1;
        const char* last = source.data() + source.size();
        if (std::from_chars(first, last, number).ec == std::errc::result_out_of_range) {
            result.entityNumbersTooLarge = true;
        }
    }

    /// Ends behind the closing apostrophe, or at the end of a file that is cut short.
    void RewriteString() {
        const std::size_t begin = result.text.size();
        result.text += '\'';
        ++at;
        while (at < source.size() && !(source[at] == '\'' && !Ahead("''"))) RewriteCharacter();
        if (at < source.size()) {
            result.text += '\'';
            ++at;
        }
        if (inSchema) NameSchema(begin);
    }

    void RewriteCharacter() {
        if (Ahead("''") || Ahead("\\\\")) {
            Put(static_cast<char32_t>(source[at]));
            at += 2;
        } else if (Ahead("\\X4\\")) {
            at += 4;
            RewriteGroups(8);
        } else if (Ahead("\\X2\\")) {
            at += 4;
            RewriteGroups(4);
        } else if (Ahead("\\X\\")) {
            at += 3;
            RewriteGroup(2);
        } else if (Ahead("\\S\\")) {
            RewriteShifted();
        } else if (source[at] == '\\') {
            Copy(1);  // the alphabet directive \PA\, or a stray backslash
        } else if (source[at] == '\r' || source[at] == '\n') {
            ++at;
        } else if (static_cast<unsigned char>(source[at]) >= 0x80) {
            RewriteBytes();
        } else {
            Put(static_cast<char32_t>(source[at++]));
        }
    }

    /// `\S\` and a character, which stands for the one 128 above it. An apostrophe is doubled
    /// there too, and else ends the string.
    void RewriteShifted() {
        constexpr std::size_t prefix = 3;
        const std::string_view next = source.substr(at + prefix, 2);
        if (next == "''") {
            Put(U'\xA7');
            at += prefix + 2;
        } else if (next.starts_with('\'')) {
            at += prefix;
        } else {
            Copy(prefix + 1);
        }
    }

    /// Groups of hexadecimal digits up to `\X0\`.
    void RewriteGroups(std::size_t digitCount) {
        while (!Ahead("\\X0\\")) {
            if (!RewriteGroup(digitCount)) return;
        }
        at += 4;
    }

    bool RewriteGroup(std::size_t digitCount) {
        const std::string_view digits = source.substr(at, digitCount);
        const char* last = digits.data() + digits.size();
        std::uint32_t value = 0;
        const bool good = digits.size() == digitCount &&
                          std::from_chars(digits.data(), last, value, 16).ptr == last;
        if (!good) return false;
        Put(value > 0x10FFFF ? 0xFFFD : static_cast<char32_t>(value));
        at += digitCount;
        return true;
    }

    /// A run of bytes from 0x80 on.
    void RewriteBytes() {
        std::size_t end = at;
        while (end < source.size() && static_cast<unsigned char>(source[end]) >= 0x80) ++end;
        const std::string_view bytes = source.substr(at, end - at);
        const std::wstring characters = FromUtf8(bytes);
        if (characters.find(L'\xFFFD') == std::wstring::npos) {
            for (const wchar_t character : characters) Put(static_cast<char32_t>(character));
        } else {
            for (const char byte : bytes) Put(static_cast<unsigned char>(byte));
        }
        at = end;
    }

    void Copy(std::size_t count) {
        const std::string_view piece = source.substr(at, count);
        result.text += piece;
        at += piece.size();
    }

    /// Writes one character of a string, as itself where that is safe.
    void Put(char32_t character) {
        if (character > 0xFFFF) {
            PutUnits({0xD800 + ((character - 0x10000) >> 10), 0xDC00 + (character & 0x3FF)});
        } else if (character >= 0x80) {
            PutUnits({character});
        } else if (const auto i = maskedCharacters.find(static_cast<char>(character));
                   i != std::string_view::npos) {
            PutUnits({firstPlaceholder + static_cast<char32_t>(i)});
        } else {
            result.text += static_cast<char>(character);
        }
    }

    void PutUnits(std::initializer_list<char32_t> units) {
        result.text += "\\X2\\";
        for (const char32_t unit : units) {
            char digits[9];
            std::snprintf(digits, sizeof digits, "%04X", static_cast<unsigned int>(unit));
            result.text += digits;
        }
        result.text += "\\X0\\";
    }

    /// Takes the schema's name from the string that begins at `begin` and gives it the name that
    /// the reader knows.
    void NameSchema(std::size_t begin) {
        result.schema = result.text.substr(begin + 1, result.text.size() - begin - 2);
        std::string known = result.schema;
        std::transform(known.begin(), known.end(), known.begin(),
                       [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
        if (known.starts_with("IFC4") || known.starts_with("IFC5")) known = "IFC2X4";
        if (known.starts_with("IFC2X3")) known = "IFC2X3";
        result.text.replace(begin, std::string::npos, '\'' + known + '\'');
        inSchema = false;
    }

    std::string_view source;
    std::size_t at = 0;
    bool inSchema = false;
    bool inData = false;
    StepText result;
};

char32_t FromPlaceholder(char32_t character) {
    const bool placeholder =
        character >= firstPlaceholder && character < firstPlaceholder + maskedCharacters.size();
    if (!placeholder) return character;
    return static_cast<char32_t>(maskedCharacters[character - firstPlaceholder]);
}

}  // namespace

StepText PrepareStepText(std::string_view source) {
    return Rewriter(source).Run();
}

std::wstring FinishStepString(std::wstring_view text) {
    std::wstring units;
    units.reserve(text.size());
    for (const wchar_t unit : text) {
        units.push_back(static_cast<wchar_t>(FromPlaceholder(static_cast<char32_t>(unit))));
    }
    return FromUtf8(ToUtf8(units));
}
