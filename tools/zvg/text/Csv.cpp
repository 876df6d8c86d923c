#include "tools/zvg/text/Csv.h"

#include <string_view>

#include "model/element/Utf8.h"

namespace ZVSmartModel::Tool {

namespace {

constexpr std::string_view keptControls = "\t\r\n";

std::string WithoutControls(std::string_view text) {
    std::string out;
    while (!text.empty()) {
        const std::size_t end = text.find_first_of(keptControls);
        out += EscapeControls(text.substr(0, end));
        if (end == std::string_view::npos) break;
        out += text[end];
        text.remove_prefix(end + 1);
    }
    return out;
}

std::string Field(const std::string& value) {
    const std::string text = WithoutControls(value);
    if (!text.empty() && text.find_first_of(",\"\t\r\n") == std::string::npos) return text;
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted + '"';
}

void Append(std::string& record, const std::string& value) {
    if (!record.empty()) record += ',';
    record += Field(value);
}

}  // namespace

std::string CsvHeader(const Document& object) {
    std::string record;
    for (const auto& [name, value] : object.items()) Append(record, name);
    record += "\r\n";
    return record;
}

std::string CsvRecord(const Document& object) {
    std::string record;
    for (const Document& value : object) {
        Append(record, value.is_string() ? value.get_ref<const std::string&>() : value.dump());
    }
    record += "\r\n";
    return record;
}

}  // namespace ZVSmartModel::Tool
