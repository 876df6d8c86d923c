#include "model/pack/ChildMessages.h"

#include <algorithm>
#include <charconv>
#include <vector>

namespace ZVSmartModel {

namespace {

std::string OneText(std::string text) {
    std::replace(text.begin(), text.end(), '\t', ' ');
    return text;
}

std::string TabSeparated(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts) {
        if (&text != &texts.front()) joined += '\t';
        joined += OneText(text);
    }
    return joined;
}

std::vector<std::string> Split(const std::string& joined) {
    std::vector<std::string> texts;
    std::size_t begin = 0;
    while (true) {
        const std::size_t end = joined.find('\t', begin);
        texts.push_back(joined.substr(begin, end - begin));
        if (end == std::string::npos) return texts;
        begin = end + 1;
    }
}

bool Take(const std::string& text, std::size_t& number) {
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end;
}

}  // namespace

std::string MessageLine(ChildMessage kind, std::string_view text) {
    std::string line = static_cast<char>(kind) + std::string(text);
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    return line + '\n';
}

std::string TextOf(const PackTypeCount& count) {
    return TabSeparated({count.type, std::to_string(count.inModel), std::to_string(count.arrived),
                         std::to_string(count.withBody)});
}

std::optional<PackTypeCount> TypeCountOf(const std::string& text) {
    const std::vector<std::string> texts = Split(text);
    PackTypeCount count;
    if (texts.size() != 4 || !Take(texts[1], count.inModel) || !Take(texts[2], count.arrived) ||
        !Take(texts[3], count.withBody)) {
        return std::nullopt;
    }
    count.type = texts[0];
    return count;
}

std::string TextOf(const PackWarning& finding) {
    std::vector<std::string> texts = {finding.kind, finding.text, finding.lost ? "lost" : "",
                                      std::to_string(finding.count)};
    texts.insert(texts.end(), finding.where.begin(), finding.where.end());
    return TabSeparated(texts);
}

std::optional<PackWarning> FindingOf(const std::string& text) {
    const std::vector<std::string> texts = Split(text);
    PackWarning finding;
    if (texts.size() < 4 || !Take(texts[3], finding.count)) return std::nullopt;
    finding.kind = texts[0];
    finding.text = texts[1];
    finding.lost = texts[2] == "lost";
    finding.where.assign(texts.begin() + 4, texts.end());
    return finding;
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

}  // namespace ZVSmartModel
