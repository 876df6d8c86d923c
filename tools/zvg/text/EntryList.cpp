#include "tools/zvg/text/EntryList.h"

#include "ZVSmartModel/Error.h"
#include "model/element/Utf8.h"
#include "tools/zvg/text/Csv.h"
#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

namespace {

/// Tabs within a value are escaped.
std::string TextLine(const Document& entry) {
    std::string line;
    for (const Document& value : entry) {
        if (&value != &entry.front()) line += '\t';
        line +=
            value.is_string() ? EscapeControls(value.get_ref<const std::string&>()) : value.dump();
    }
    return line + '\n';
}

}  // namespace

ListFormat ListFormatOf(bool asCsv, bool asJson) {
    if (asCsv && asJson) throw Error(Status::Usage, "--csv and --json exclude each other");
    return asCsv ? ListFormat::Csv : asJson ? ListFormat::Json : ListFormat::Text;
}

void EntryList::Begin(const std::string& newFile, bool isOneOfSeveral) {
    count = 0;
    file = isOneOfSeveral ? std::optional(newFile) : std::nullopt;
    if (format == ListFormat::Json) json.emplace(NewDocument(newFile), member);
    if (format == ListFormat::Csv && !hasHeader) WriteOutput(CsvHeader(Told(names)));
    hasHeader = true;
}

void EntryList::Print(const Document& entry) {
    ++count;
    if (json) return json->Add(entry);
    WriteOutput(format == ListFormat::Csv ? CsvRecord(Told(entry)) : TextLine(entry));
}

void EntryList::End() {
    if (json) json->End();
    json.reset();
}

Document EntryList::Told(const Document& entry) const {
    if (!file) return entry;
    Document whole = {{"file", *file}};
    whole.update(entry);
    return whole;
}

}  // namespace ZVSmartModel::Tool
