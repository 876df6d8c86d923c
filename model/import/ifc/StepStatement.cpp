#include "model/import/ifc/StepStatement.h"

#include <charconv>

namespace ZVSmartModel {

namespace {

constexpr std::string_view blanks = " \t\r\n";

bool IsNameCharacter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

void SkipBlanks(std::string_view& text) {
    const std::size_t first = text.find_first_not_of(blanks);
    text.remove_prefix(first == std::string_view::npos ? text.size() : first);
}

/// Takes "#12 =" off the front.
bool TakeNumber(std::string_view& text, int& number) {
    if (!text.starts_with('#')) return false;
    const char* end = text.data() + text.size();
    const auto [behind, error] = std::from_chars(text.data() + 1, end, number);
    if (error != std::errc()) return false;
    text.remove_prefix(static_cast<std::size_t>(behind - text.data()));
    SkipBlanks(text);
    if (!text.starts_with('=')) return false;
    text.remove_prefix(1);
    SkipBlanks(text);
    return true;
}

/// Of the two commas around what is left out between `written` and `at`, one goes.
void DropComma(std::string_view text, std::size_t& written, std::size_t& at) {
    const auto isBlank = [&](std::size_t i) {
        return blanks.find(text[i]) != std::string_view::npos;
    };
    while (at < text.size() && isBlank(at)) ++at;
    if (at < text.size() && text[at] == ',') {
        ++at;
        return;
    }
    while (written > 0 && isBlank(written - 1)) --written;
    if (written > 0 && text[written - 1] == ',') --written;
}

}  // namespace

bool ParseStatement(std::string_view text, StepStatement& statement) {
    SkipBlanks(text);
    if (!TakeNumber(text, statement.number)) return false;
    std::size_t nameEnd = 0;
    while (nameEnd < text.size() && IsNameCharacter(text[nameEnd])) ++nameEnd;
    statement.name = text.substr(0, nameEnd);
    text.remove_prefix(nameEnd);
    SkipBlanks(text);
    const std::size_t last = text.find_last_not_of(blanks);
    if (statement.name.empty() || last == std::string_view::npos) return false;
    if (text.front() != '(' || text[last] != ')') return false;
    int depth = 0;
    for (std::size_t i = 0; i <= last; ++i) {
        if (text[i] == '(') ++depth;
        if (text[i] == ')' && --depth == 0 && i != last) return false;
    }
    statement.arguments = text.substr(1, last - 1);
    return depth == 0;
}

std::vector<std::string_view> ArgumentsOf(const StepStatement& statement) {
    std::vector<std::string_view> arguments;
    const std::string_view text = statement.arguments;
    int depth = 0;
    std::size_t begin = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '(') ++depth;
        if (text[i] == ')') --depth;
        if (text[i] != ',' || depth != 0) continue;
        arguments.push_back(text.substr(begin, i - begin));
        begin = i + 1;
    }
    arguments.push_back(text.substr(begin));
    return arguments;
}

std::size_t NextStatement(std::string_view text, std::size_t from) {
    for (std::size_t line = text.find('\n', from); line != std::string_view::npos;
         line = text.find('\n', line + 1)) {
        std::string_view rest = text.substr(line + 1);
        SkipBlanks(rest);
        const std::size_t at = text.size() - rest.size();
        int number = 0;
        if (!TakeNumber(rest, number) || rest.empty() || !IsNameCharacter(rest.front())) continue;
        return at;
    }
    return std::string_view::npos;
}

std::size_t CutReferences(std::string& text, const std::unordered_set<int>& entities) {
    std::size_t cut = 0;
    std::size_t written = 0;  // what is kept moves towards the front
    int depth = 0;
    const char* const end = text.data() + text.size();
    for (std::size_t at = 0; at < text.size();) {
        const char c = text[at];
        if (c == '(') ++depth;
        if (c == ')') --depth;
        if (c == ';') depth = 0;
        int number = 0;
        const char* behind = text.data() + at + 1;
        const bool isReference = c == '#' && depth > 0;
        if (isReference) behind = std::from_chars(behind, end, number).ptr;
        if (!isReference || !entities.contains(number)) {
            text[written++] = c;
            ++at;
            continue;
        }
        ++cut;
        at = static_cast<std::size_t>(behind - text.data());
        if (depth == 1) {
            text[written++] = '$';
            continue;
        }
        DropComma(text, written, at);
    }
    text.resize(written);
    return cut;
}

}  // namespace ZVSmartModel
