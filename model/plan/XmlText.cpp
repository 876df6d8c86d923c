#include "model/plan/XmlText.h"

namespace ZVSmartModel {

namespace {

std::string_view EscapeOf(char byte) {
    switch (byte) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        case '\n':
        case '\r':
        case '\t':
            return " ";
        default:
            return {};
    }
}

/// U+FFFE and U+FFFF are no characters in XML.
bool IsNonCharacter(std::string_view text) {
    return text.starts_with("\xEF\xBF\xBE") || text.starts_with("\xEF\xBF\xBF");
}

bool IsLetter(char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte == '_';
}

}  // namespace

std::string EscapeXml(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (const std::string_view escape = EscapeOf(text[i]); !escape.empty()) {
            out += escape;
        } else if (IsNonCharacter(text.substr(i))) {
            i += 2;
        } else if (static_cast<unsigned char>(text[i]) >= 0x20) {
            out += text[i];
        }
    }
    return out;
}

std::string Identifier(std::string_view text) {
    std::string name;
    name.reserve(text.size() + 1);
    for (const char byte : text) {
        const bool valid = IsLetter(byte) || (byte >= '0' && byte <= '9') || byte == '-';
        name += valid ? byte : '_';
    }
    if (name.empty() || !IsLetter(name.front())) name.insert(name.begin(), '_');
    return name;
}

std::string UniqueIdentifiers::Take(std::string_view text) {
    const std::string name = Identifier(text);
    std::string unique = name;
    int& number = lastNumber[name];
    while (!taken.insert(unique).second) unique = name + '-' + std::to_string(++number + 1);
    return unique;
}

}  // namespace ZVSmartModel
