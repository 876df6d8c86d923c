#include "tools/zvg/import/ChildMessages.h"

#include <algorithm>

std::string MessageLine(ChildMessage kind, std::string_view text) {
    std::string line = static_cast<char>(kind) + std::string(text);
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    return line + '\n';
}

void MessageReader::Take(std::string_view bytes, const Listener& listener) {
    while (!bytes.empty()) {
        const std::size_t end = bytes.find('\n');
        line += bytes.substr(0, std::min(end, longestLine - line.size()));
        if (end == std::string_view::npos) return;
        bytes.remove_prefix(end + 1);
        std::string whole;
        whole.swap(line);
        if (!whole.empty()) listener(static_cast<ChildMessage>(whole[0]), whole.substr(1));
    }
}
