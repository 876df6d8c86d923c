#include "tools/zvg/text/JsonList.h"

#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

JsonList::JsonList(const Document& head, const std::string& name) {
    const std::string members = ToJson(head);
    WriteOutput(members.substr(0, members.size() - 1) + ",\"" + name + "\":[");
}

void JsonList::Add(const Document& entry) {
    WriteOutput((empty ? "\n" : ",\n") + ToJson(entry));
    empty = false;
}

void JsonList::End() {
    WriteOutput("]}\n");
}

}  // namespace ZVSmartModel::Tool
