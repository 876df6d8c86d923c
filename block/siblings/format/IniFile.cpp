#include "ZVSmartFormat/IniFile.h"

#include <string_view>

#include "ZVSmartFormat/FileStream.h"

namespace ZVSmartFormat {

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

std::string_view Trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\v\f";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// The length of the UTF-8 sequence that `lead` begins, 0 where it begins none.
std::size_t SequenceLength(unsigned char lead) {
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead < 0xE0) return 2;
    if (lead >= 0xE0 && lead < 0xF0) return 3;
    if (lead >= 0xF0 && lead < 0xF5) return 4;
    return 0;
}

/// Takes one character from the front of `utf8`, which is not empty; U+FFFD, and one byte, for
/// what is no UTF-8 (overlong forms and surrogates included).
char32_t TakeCharacter(std::string_view& utf8) {
    constexpr char32_t replacement = 0xFFFD;
    constexpr char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const auto lead = static_cast<unsigned char>(utf8.front());
    const std::size_t length = SequenceLength(lead);
    char32_t character = length < 2 ? lead : static_cast<char32_t>(lead & (0x7F >> length));
    bool valid = length != 0 && length <= utf8.size();
    for (std::size_t i = 1; valid && i < length; ++i) {
        const auto next = static_cast<unsigned char>(utf8[i]);
        valid = (next & 0xC0) == 0x80;
        character = (character << 6) | (next & 0x3F);
    }
    valid = valid && character >= smallest[length] && character <= 0x10FFFF &&
            (character & 0xFFFFF800) != 0xD800;
    utf8.remove_prefix(valid ? length : 1);
    return valid ? character : replacement;
}

std::wstring Wide(std::string_view utf8) {
    std::wstring text;
    while (!utf8.empty()) {
        const char32_t character = TakeCharacter(utf8);
        if (sizeof(wchar_t) == 2 && character > 0xFFFF) {
            text += static_cast<wchar_t>(0xD800 + ((character - 0x10000) >> 10));
            text += static_cast<wchar_t>(0xDC00 + ((character - 0x10000) & 0x3FF));
        } else {
            text += static_cast<wchar_t>(character);
        }
    }
    return text;
}

bool ReadWhole(const std::string& path, std::string& content) {
    CZVFTFileInStream file(path);
    if (!file.Open()) return false;
    char piece[4096];
    for (;;) {
        u64 byteCount = sizeof piece;
        if (!file.Read(piece, &byteCount)) return false;
        if (byteCount == 0) return true;
        content.append(piece, static_cast<std::size_t>(byteCount));
    }
}

}  // namespace

bool CZVFTIniFile::LoadFile(const std::string& path) {
    loaded = false;
    sections.clear();
    std::string content;
    if (!ReadWhole(path, content)) return false;

    std::string_view rest = content;
    if (rest.substr(0, byteOrderMark.size()) == byteOrderMark)
        rest.remove_prefix(byteOrderMark.size());
    std::wstring section;
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        const std::string_view line = Trimmed(rest.substr(0, end));
        rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);

        if (line.empty() || line.front() == ';' || line.front() == '#') continue;
        if (line.front() == '[' && line.back() == ']') {
            section = Wide(Trimmed(line.substr(1, line.size() - 2)));
            continue;
        }
        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos) continue;
        sections[section].emplace(Wide(Trimmed(line.substr(0, equals))),
                                  Wide(Trimmed(line.substr(equals + 1))));
    }
    loaded = true;
    return true;
}

bool CZVFTIniFile::IsValid() const {
    return loaded;
}

std::wstring CZVFTIniFile::GetValue(const std::wstring& section, const std::wstring& key) const {
    const auto values = sections.find(section);
    if (values == sections.end()) return {};
    const auto value = values->second.find(key);
    return value == values->second.end() ? std::wstring() : value->second;
}

}  // namespace ZVSmartFormat
