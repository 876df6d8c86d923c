#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "model/diff/BlockContents.h"
#include "model/diff/CompDifference.h"
#include "model/diff/Matching.h"
#include "model/element/OpenedBlock.h"
#include "model/element/RecordBytes.h"
#include "model/element/Utf8.h"
#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/reading/RecordDocument.h"
#include "tools/zvg/reading/StandardInput.h"
#include "tools/zvg/text/JsonList.h"
#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

using namespace ZVSmartZvg;

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

/// Prints differences as they come.
class DifferencePrinter {
  public:
    DifferencePrinter(const std::string& fileA, const std::string& fileB, bool asJson) {
        if (!asJson) return;
        json.emplace(Document({{"schema", 1}, {"fileA", fileA}, {"fileB", fileB}}), "differences");
    }

    void Print(const Document& entry) {
        none = false;
        if (json) {
            json->Add(entry);
        } else {
            WriteOutput(TextOf(entry));
        }
    }

    void End() {
        if (json) {
            json->End();
        } else if (none) {
            WriteOutput("no differences\n");
        }
    }

  private:
    std::optional<JsonList> json;
    bool none = true;
};

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

void AddDifference(Document& entry, const CompDifference& difference) {
    AddChanges(entry, "properties", "name", difference.properties);
    AddChanges(entry, "classes", "level", difference.classes);
    for (const std::string& field : difference.fields) entry["fields"].push_back(field);
}

/// The host's own value as the real number that pack writes there.
Document RealOf(u64 value) {
    return EightBytesDocument(value)["asReal"];
}

class Comparison {
  public:
    Comparison(OpenedBlock& blockA, OpenedBlock& blockB, BlockContents contentsA,
               BlockContents contentsB, DifferencePrinter& printer)
        : blockA(blockA),
          blockB(blockB),
          printer(printer),
          a(std::move(contentsA)),
          b(std::move(contentsB)) {}

    void Print() {
        PrintFloors();
        for (const auto& [inA, inB] : MatchComponents(a.components, b.components)) {
            if (!inB) {
                PrintLone("removed", a.components[*inA], true);
            } else if (!inA) {
                PrintLone("added", b.components[*inB], false);
            } else {
                PrintPair(a.components[*inA], b.components[*inB]);
            }
        }
    }

  private:
    /// Numbers the second file's floors as those of the first on the way.
    void PrintFloors() {
        std::vector<unsigned int> numbers(b.floors.size());
        auto next = static_cast<unsigned int>(a.floors.size());
        for (const auto& [inA, inB] : MatchFloors(a.floors, b.floors)) {
            if (inB) numbers[*inB] = inA ? static_cast<unsigned int>(*inA) : next++;
            if (inA && inB) {
                PrintFloorPair(a.floors[*inA], b.floors[*inB]);
            } else {
                const FloorEntry& floor = inA ? a.floors[*inA] : b.floors[*inB];
                printer.Print({{"kind", "floor"},
                               {"change", inA ? "removed" : "added"},
                               {"name", floor.name}});
            }
        }
        for (CompEntry& comp : b.components) comp.floor = numbers[comp.floor];
    }

    void PrintFloorPair(const FloorEntry& left, const FloorEntry& right) {
        const bool renamed = left.name != right.name;
        Document entry = {
            {"kind", "floor"}, {"change", renamed ? "renamed" : "changed"}, {"name", left.name}};
        const std::size_t bare = entry.size();
        if (renamed) entry["newName"] = Change(left.name, right.name);
        if (left.order != right.order) entry["order"] = Change(left.order, right.order);
        if (left.dataA != right.dataA) {
            entry["dataA"] = Change(RealOf(left.dataA), RealOf(right.dataA));
        }
        if (left.dataB != right.dataB) {
            entry["dataB"] = Change(RealOf(left.dataB), RealOf(right.dataB));
        }
        if (entry.size() != bare) printer.Print(entry);
    }

    static Document Place(const CompEntry& comp) {
        return PlaceText(comp.index.floorIndex, comp.index.compIndex);
    }

    void PrintLone(const char* change, const CompEntry& comp, bool inA) {
        const Document place = inA ? Change(Place(comp), nullptr) : Change(nullptr, Place(comp));
        printer.Print(
            {{"kind", "component"}, {"change", change}, {"name", comp.key}, {"component", place}});
    }

    void PrintPair(const CompEntry& left, const CompEntry& right) {
        const bool moved = left.floor != right.floor;
        const bool sameAspects = left.aspects == right.aspects;
        if (!moved && sameAspects && left.geometry == right.geometry) return;
        Document entry = {{"kind", "component"},
                          {"change", moved ? "moved" : "changed"},
                          {"name", left.key},
                          {"component", Change(Place(left), Place(right))}};
        if (moved) {
            entry["floor"] =
                Change(a.floors[left.index.floorIndex].name, b.floors[right.index.floorIndex].name);
        }
        HeldMemory held(blockA.Limits());
        if (!sameAspects) {
            SZVLGZvgComp compA, compB;
            blockA.ReadComp(left.index, compA);
            blockB.ReadComp(right.index, compB);
            const u64 bytes = BytesOf(compA) + BytesOf(compB);
            blockA.Limits().Work(bytes);
            held.Add(2 * bytes);
            AddDifference(entry, DifferenceOf(compA, compB));
        }
        if (left.geometry != right.geometry) entry["geometry"] = true;
        printer.Print(entry);
    }

    OpenedBlock& blockA;
    OpenedBlock& blockB;
    DifferencePrinter& printer;
    BlockContents a, b;
};

void Diff(const std::string& fileA, const std::string& fileB, const CommonOptions& common) {
    Budget limits(common.noLimit, "--no-limit");
    OpenedBlock blockA(OpenNamed(fileA), limits);
    OpenedBlock blockB(OpenNamed(fileB), limits);
    BlockContents contentsA = ReadContents(blockA);
    BlockContents contentsB = ReadContents(blockB);
    DifferencePrinter printer(fileA, fileB, common.json);
    Comparison(blockA, blockB, std::move(contentsA), std::move(contentsB), printer).Print();
    printer.End();
    blockA.ThrowIfDamaged();
    blockB.ThrowIfDamaged();
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
