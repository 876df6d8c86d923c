#include "tools/zvg/text/Csv.h"

#include <string_view>
#include <vector>

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
    std::string text = WithoutControls(value);
    if (!text.empty() && text.find_first_of(",\"\t\r\n") == std::string::npos) return text;
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted + '"';
}

std::string Record(const std::vector<std::string>& fields) {
    std::string record;
    for (const std::string& field : fields)
        record += (&field == &fields.front() ? "" : ",") + field;
    return record + "\r\n";
}

}  // namespace

std::string CsvHeader(const Document& object) {
    std::vector<std::string> fields;
    for (const auto& [name, value] : object.items()) fields.push_back(Field(name));
    return Record(fields);
}

std::string CsvRecord(const Document& values) {
    std::vector<std::string> fields;
    for (const Document& value : values) {
        fields.push_back(value.is_null()     ? ""
                         : value.is_string() ? Field(value.get_ref<const std::string&>())
                                             : Field(value.dump()));
    }
    return Record(fields);
}

}  // namespace ZVSmartModel::Tool
