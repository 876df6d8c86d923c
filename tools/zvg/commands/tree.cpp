#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "model/element/OpenedBlock.h"
#include "model/element/Utf8.h"
#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/reading/InputFiles.h"
#include "tools/zvg/reading/StandardInput.h"
#include "tools/zvg/text/Document.h"
#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

using namespace ZVSmartZvg;

namespace {

using ClassNames = std::array<std::wstring, 3>;  // of levels 2, 3 and 4

constexpr unsigned int bytesOfEntry = 1000;  // in a map, in a document and in its text

/// Counts `components` in the entry called `name` of the list `parent["classes"]`, which is
/// filled in the order of the names; returns the entry.
Document& CountClass(Document& parent, const std::string& name, unsigned long long components,
                     Budget& limits) {
    Document& list = parent["classes"];
    if (list.empty() || list.back()["name"] != name) {
        limits.Memory(bytesOfEntry + name.size());
        list.push_back({{"name", name}, {"components", 0}});
    }
    Document& entry = list.back();
    entry["components"] = entry["components"].get<unsigned long long>() + components;
    return entry;
}

Document FloorDocument(OpenedBlock& block, unsigned int floor) {
    const std::size_t damagesBefore = block.Damages().size();
    std::map<ClassNames, unsigned long long> counts;
    HeldMemory held(block.Limits());
    block.ForEachComp(floor, [&](const SZVLGCompIndex&, const SZVLGZvgComp& comp) {
        ClassNames names = {comp.classLevel2Name, comp.classLevel3Name, comp.classLevel4Name};
        std::uint64_t bytes = bytesOfEntry;
        for (const std::wstring& name : names) bytes += name.size() * sizeof(wchar_t);
        if (++counts[std::move(names)] == 1) held.Add(bytes);
    });
    const std::string floorName = ToUtf8(block.FloorName(floor));
    block.Limits().Memory(bytesOfEntry + 2 * floorName.size());
    block.Limits().Work(bytesOfEntry);
    Document document = {{"floor", floor},
                         {"name", floorName},
                         {"order", block.FloorOrder(floor)},
                         {"components", block.FloorCompNum(floor)},
                         {"classes", Document::array()}};
    if (block.Damages().size() != damagesBefore) document["damaged"] = true;
    for (const auto& [names, components] : counts) {
        Document* at = &document;
        for (const std::wstring& name : names) {
            at = &CountClass(*at, ToUtf8(name), components, block.Limits());
        }
    }
    return document;
}

std::string NameAndCount(const Document& entry) {
    const std::string name = EscapeControls(entry["name"].get_ref<const std::string&>());
    return (name.empty() ? "(no name)" : name) + ": " + entry["components"].dump() +
           (entry.contains("damaged") ? ", damaged\n" : "\n");
}

using Line = std::pair<std::size_t, const Document*>;  // indentation, class

void PushClasses(std::vector<Line>& stack, std::size_t indent, const Document& entry) {
    if (!entry.contains("classes")) return;
    const Document& list = entry["classes"];
    for (std::size_t i = list.size(); i > 0; --i) stack.emplace_back(indent, &list[i - 1]);
}

void WriteTree(const Document& document) {
    std::vector<Line> stack;
    for (const Document& floor : document["floors"]) {
        WriteOutput(floor["floor"].dump() + " (order " + floor["order"].dump() + ") " +
                    NameAndCount(floor));
        PushClasses(stack, 2, floor);
        while (!stack.empty()) {
            const auto [indent, entry] = stack.back();
            stack.pop_back();
            WriteOutput(std::string(indent, ' ') + NameAndCount(*entry));
            PushClasses(stack, indent + 2, *entry);
        }
    }
}

void Tree(const std::string& file, const CommonOptions& common) {
    const bool asJson = common.json;
    Budget limits(common.noLimit, "--no-limit");
    OpenedBlock block(OpenNamed(file), limits, OptionsOf(common));
    const FileWalk walk(block, FileWalk::Through::Elements);
    Document document = NewDocument(file);
    document["floors"] = Document::array();
    const unsigned int floors = block.Reader().GetFloorNum();
    for (unsigned int floor = 0; floor < floors; ++floor) {
        const auto add = [&] { document["floors"].push_back(FloorDocument(block, floor)); };
        if (!block.Within("floor " + std::to_string(floor), add)) break;
    }
    if (asJson) {
        PrintDocument(document, asJson);
    } else {
        WriteTree(document);
    }
    block.ThrowIfDamaged();
}

}  // namespace

void RegisterTree(CLI::App& app, CommonOptions& common) {
    const auto files = std::make_shared<std::vector<std::string>>();
    CLI::App* const command =
        AddReadingCommand(app, "tree", "Print floors, their classes and the number of components",
                          "zvg tree house.zvg", *files);
    AddLimitOption(*command, common);
    AddThreadsOption(*command, common.threads);
    command->callback([files, &common] {
        ForEachFile(*files, common.json ? "" : ": ",
                    [&common](const FileTurn& turn) { Tree(turn.file, common); });
    });
}

}  // namespace ZVSmartModel::Tool
