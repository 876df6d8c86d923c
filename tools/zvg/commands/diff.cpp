#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ZVSmartModel/Diff.h"
#include "model/element/OpenedBlock.h"
#include "model/element/Utf8.h"
#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/reading/StandardInput.h"
#include "tools/zvg/text/Document.h"
#include "tools/zvg/text/JsonList.h"
#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

namespace {

std::string ValueText(const Document& value) {
    if (value.is_null()) return "none";
    if (!value.is_string()) return value.dump();
    return '\'' + EscapeControls(value.get_ref<const std::string&>()) + '\'';
}

std::string ChangeText(const std::string& name, const Document& change) {
    return "  " + name + ": " + ValueText(change["a"]) + " -> " + ValueText(change["b"]) + '\n';
}

/// One line for a difference and one for each thing that changed.
std::string TextOf(const Document& entry) {
    std::string text = entry["kind"].get<std::string>() + ' ' + entry["change"].get<std::string>() +
                       ": " + EscapeControls(entry["name"].get_ref<const std::string&>());
    if (entry.contains("component")) {
        const Document& place = entry["component"];
        const bool two = !place["a"].is_null() && !place["b"].is_null() && place["a"] != place["b"];
        const std::string a = place["a"].is_null() ? "" : place["a"].get<std::string>();
        const std::string b = place["b"].is_null() ? "" : place["b"].get<std::string>();
        text += " (" + (two ? a + " -> " + b : a.empty() ? b : a) + ')';
    }
    text += '\n';
    for (const char* name : {"newName", "order", "dataA", "dataB", "floor"}) {
        if (entry.contains(name)) text += ChangeText(name, entry[name]);
    }
    for (const Document& change : entry.value("properties", Document::array())) {
        text += ChangeText("property " + EscapeControls(change["name"].get<std::string>()), change);
    }
    for (const Document& change : entry.value("classes", Document::array())) {
        text += ChangeText("class level " + change["level"].get<std::string>(), change);
    }
    if (entry.contains("geometry")) text += "  geometry\n";
    for (const Document& field : entry.value("fields", Document::array())) {
        text += "  " + field.get<std::string>() + '\n';
    }
    return text;
}

Document Change(const Document& a, const Document& b) {
    return {{"a", a}, {"b", b}};
}

Document ValueOf(const std::optional<std::string>& value) {
    return value ? Document(*value) : Document(nullptr);
}

/// A list of {`nameMember`, "a", "b"}; the member is left out where the list is empty.
void AddChanges(Document& entry, const char* member, const char* nameMember,
                const std::vector<ValueChange>& changes) {
    for (const ValueChange& change : changes) {
        entry[member].push_back(
            {{nameMember, change.name}, {"a", ValueOf(change.a)}, {"b", ValueOf(change.b)}});
    }
}

template <class Value>
Document ChangeOf(const Changed<Value>& change) {
    return Change(change.a, change.b);
}

Document RealChange(const Changed<double>& change) {
    return Change(RealNumber(change.a), RealNumber(change.b));
}

Document PlaceOf(const std::optional<ElementIndex>& index) {
    return index ? Document(PlaceText(index->floor, index->position)) : Document(nullptr);
}

void AddFloor(Document& entry, const FloorDifference& floor) {
    entry["name"] = floor.name;
    if (floor.renamed) entry["newName"] = ChangeOf(*floor.renamed);
    if (floor.order) entry["order"] = ChangeOf(*floor.order);
    if (floor.elevation) entry["dataA"] = RealChange(*floor.elevation);
    if (floor.height) entry["dataB"] = RealChange(*floor.height);
}

void AddElement(Document& entry, const ElementDifference& element) {
    entry["name"] = element.guid;
    entry["component"] = Change(PlaceOf(element.inA), PlaceOf(element.inB));
    if (element.floor) entry["floor"] = ChangeOf(*element.floor);
    AddChanges(entry, "properties", "name", element.properties);
    AddChanges(entry, "classes", "level", element.classes);
    for (const std::string& field : element.fields) entry["fields"].push_back(field);
    if (element.geometry) entry["geometry"] = true;
}

Document DocumentOf(const Difference& difference) {
    static const std::map<Difference::Kind, const char*> words = {
        {Difference::Kind::Added, "added"},
        {Difference::Kind::Removed, "removed"},
        {Difference::Kind::Changed, "changed"},
        {Difference::Kind::Moved, "moved"},
        {Difference::Kind::Renamed, "renamed"}};
    Document entry = {{"kind", difference.floor ? "floor" : "component"},
                      {"change", words.at(difference.kind)}};
    if (difference.floor) AddFloor(entry, *difference.floor);
    if (difference.element) AddElement(entry, *difference.element);
    return entry;
}

/// Prints differences as they come.
class DifferencePrinter {
  public:
    DifferencePrinter(const std::string& fileA, const std::string& fileB, bool asJson)
        : head({{"schema", 1}, {"fileA", fileA}, {"fileB", fileB}}), asJson(asJson) {}

    void Print(const Difference& difference) {
        none = false;
        const Document entry = DocumentOf(difference);
        if (asJson) {
            List().Add(entry);
        } else {
            WriteOutput(TextOf(entry));
        }
    }

    void End() {
        if (asJson) {
            List().End();
        } else if (none) {
            WriteOutput("no differences\n");
        }
    }

  private:
    /// Begun where there is something to say: both files are whole then.
    JsonList& List() {
        if (!json) json.emplace(head, "differences");
        return *json;
    }

    Document head;
    bool asJson;
    std::optional<JsonList> json;
    bool none = true;
};

void Diff(const std::string& fileA, const std::string& fileB, const CommonOptions& common) {
    const BlockFile a = OpenBlockFile(fileA, common);
    const BlockFile b = OpenBlockFile(fileB, common);
    DifferencePrinter printer(fileA, fileB, common.json);
    Compare(a, b, [&printer](const Difference& difference) {
        printer.Print(difference);
        return true;
    });
    printer.End();
}

}  // namespace

void RegisterDiff(CLI::App& app, CommonOptions& common) {
    const auto fileA = std::make_shared<std::string>();
    const auto fileB = std::make_shared<std::string>();
    CLI::App* const command = app.add_subcommand(
        "diff",
        "Print how the second block file differs from the first: floors and components, known by "
        "their GUID names, that were added, removed, moved or renamed; changed properties, classes "
        "and geometry. What the files say of themselves, their previews and the order of "
        "components are not compared. Differences or not, the exit status is 0");
    command->add_option("A", *fileA, "The first block file; - is standard input")->required();
    command->add_option("B", *fileB, "The second block file; - is standard input")->required();
    command->footer("Example:\n  zvg diff before.zvg after.zvg");
    AddLimitOption(*command, common);
    command->callback([fileA, fileB, &common] { Diff(*fileA, *fileB, common); });
}

}  // namespace ZVSmartModel::Tool
