#include "tools/zvg/reading/DifferenceDocument.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <set>
#include <utility>

#include "model/element/OpenedBlock.h"
#include "model/element/Utf8.h"

namespace ZVSmartModel::Tool {

namespace {

std::string ValueText(const Document& value) {
    if (value.is_null()) return "none";
    if (!value.is_string()) return value.dump();
    return '\'' + EscapeControls(value.get_ref<const std::string&>()) + '\'';
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
    entry["class"] = element.className;
    entry["called"] = element.name;
    entry["component"] = Change(PlaceOf(element.inA), PlaceOf(element.inB));
    if (element.floor) entry["floor"] = ChangeOf(*element.floor);
    AddChanges(entry, "properties", "name", element.properties);
    AddChanges(entry, "classes", "level", element.classes);
    for (const std::string& field : element.fields) entry["fields"].push_back(field);
    AddChanges(entry, "fieldValues", "name", element.fieldValues);
    if (element.geometry) entry["geometry"] = true;
    if (element.distance) entry["distance"] = RealNumber(*element.distance);
}

/// Something of a floor or an element that changed.
struct Thing {
    std::string name;
    Document a, b;  ///< null where nobody can read it
};

std::vector<Thing> ThingsOf(const Document& entry) {
    std::vector<Thing> things;
    constexpr std::pair<const char*, const char*> members[] = {{"newName", "name"},
                                                               {"order", "order"},
                                                               {"dataA", "elevation"},
                                                               {"dataB", "height"},
                                                               {"floor", "floor"}};
    for (const auto& [member, name] : members) {
        if (entry.contains(member))
            things.push_back({name, entry[member]["a"], entry[member]["b"]});
    }
    const auto add = [&](const char* member, const std::string& prefix, const char* nameMember) {
        for (const Document& change : entry.value(member, Document::array())) {
            things.push_back(
                {prefix + change[nameMember].get<std::string>(), change["a"], change["b"]});
        }
    };
    add("properties", "property ", "name");
    add("classes", "class level ", "level");
    add("fieldValues", "", "name");
    std::set<std::string> told;
    for (const Thing& thing : things) told.insert(thing.name);
    for (const Document& field : entry.value("fields", Document::array())) {
        const auto name = field.get<std::string>();
        if (told.count(name) == 0) things.push_back({name, nullptr, nullptr});
    }
    if (entry.contains("geometry")) things.push_back({"geometry", nullptr, nullptr});
    return things;
}

std::string PlaceOf(const Document& entry) {
    const Document& place = entry["component"];
    const bool two = !place["a"].is_null() && !place["b"].is_null() && place["a"] != place["b"];
    const std::string a = place["a"].is_null() ? "" : place["a"].get<std::string>();
    const std::string b = place["b"].is_null() ? "" : place["b"].get<std::string>();
    return two ? a + " -> " + b : a.empty() ? b : a;
}

std::string Metres(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.6g m", value);
    return text;
}

/// The largest first, as many as fit a few lines.
std::vector<std::pair<std::string, unsigned long long>> Largest(
    const std::map<std::string, unsigned long long>& counts, std::size_t most) {
    std::vector<std::pair<std::string, unsigned long long>> sorted(counts.begin(), counts.end());
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const auto& a, const auto& b) { return a.second > b.second; });
    if (sorted.size() > most) sorted.resize(most);
    return sorted;
}

}  // namespace

Document DifferenceDocument(const Difference& difference) {
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

std::string DifferenceText(const Document& entry) {
    const auto text = [&entry](const char* member) {
        return EscapeControls(entry[member].get_ref<const std::string&>());
    };
    std::string said = text("kind") + ' ' + text("change") + ": " + text("name");
    if (entry.contains("component")) {
        if (entry["class"] != "") said += ' ' + text("class");
        if (entry["called"] != "") said += " '" + text("called") + '\'';
        said += " (" + PlaceOf(entry) + ')';
    }
    said += '\n';
    for (const Thing& thing : ThingsOf(entry)) {
        said += "  " + EscapeControls(thing.name);
        if (!thing.a.is_null() || !thing.b.is_null()) {
            said += ": " + ValueText(thing.a) + " -> " + ValueText(thing.b);
        }
        if (thing.name == "geometry" && entry.contains("distance")) {
            said += ", moved by " + Metres(entry["distance"].get<double>());
        }
        said += '\n';
    }
    return said;
}

std::vector<Document> DifferenceRecords(const Document& entry) {
    const bool isElement = entry.contains("component");
    Document head = {{"kind", entry["kind"]},
                     {"change", entry["change"]},
                     {"name", entry["name"]},
                     {"class", isElement ? entry["class"] : Document(nullptr)},
                     {"called", isElement ? entry["called"] : Document(nullptr)},
                     {"a", isElement ? entry["component"]["a"] : Document(nullptr)},
                     {"b", isElement ? entry["component"]["b"] : Document(nullptr)},
                     {"what", nullptr},
                     {"old", nullptr},
                     {"new", nullptr},
                     {"distance", nullptr}};
    std::vector<Document> records;
    for (const Thing& thing : ThingsOf(entry)) {
        Document& record = records.emplace_back(head);
        record["what"] = thing.name;
        record["old"] = thing.a;
        record["new"] = thing.b;
        if (thing.name == "geometry") record["distance"] = entry.value("distance", Document());
    }
    if (records.empty()) records.push_back(std::move(head));
    return records;
}

void DifferenceCounts::Add(const Document& entry) {
    ++all;
    const bool isElement = entry.contains("component");
    const auto of = isElement ? entry["class"].get<std::string>() : std::string("floors");
    ++byClass[of][entry["change"].get<std::string>()];
    std::set<std::string> things;
    for (const Thing& thing : ThingsOf(entry)) things.insert(thing.name);
    if (entry.contains("distance")) things.insert("place");
    for (const std::string& thing : things) ++byThing[thing];
}

Document DifferenceCounts::ToDocument() const {
    Document document = {{"differences", all}, {"classes", Document::array()}};
    for (const auto& [name, counts] : byClass) {
        Document& entry = document["classes"].emplace_back(Document{{"class", name}});
        for (const auto& [change, count] : counts) entry[change] = count;
    }
    document["changed"] = byThing;
    return document;
}

std::string DifferenceCounts::ToText() const {
    std::map<std::string, unsigned long long> sums;
    for (const auto& [name, counts] : byClass) {
        for (const auto& [change, count] : counts) sums[name] += count;
    }
    constexpr std::size_t mostLines = 20;
    std::string text = std::to_string(all) + (all == 1 ? " difference\n" : " differences\n");
    for (const auto& [name, sum] : Largest(sums, mostLines)) {
        text += "  " + (name.empty() ? "(no class)" : EscapeControls(name)) + ':';
        const char* separator = " ";
        for (const auto& [change, count] : byClass.at(name)) {
            text += separator + std::to_string(count) + ' ' + change;
            separator = ", ";
        }
        text += '\n';
    }
    if (sums.size() > mostLines) {
        text += "  and " + std::to_string(sums.size() - mostLines) + " more classes\n";
    }
    if (!byThing.empty()) text += "what changed, and in how many:\n";
    for (const auto& [thing, count] : Largest(byThing, mostLines)) {
        text += "  " + EscapeControls(thing) + ": " + std::to_string(count) + '\n';
    }
    if (byThing.size() > mostLines) {
        text += "  and " + std::to_string(byThing.size() - mostLines) + " more\n";
    }
    return text;
}

}  // namespace ZVSmartModel::Tool
