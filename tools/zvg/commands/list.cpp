#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "model/element/OpenedBlock.h"
#include "model/element/PropertyKinds.h"
#include "model/element/RecordNames.h"
#include "model/element/Utf8.h"
#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/reading/InputFiles.h"
#include "tools/zvg/reading/RecordDocument.h"
#include "tools/zvg/reading/StandardInput.h"
#include "tools/zvg/text/Document.h"
#include "tools/zvg/text/EntryList.h"

namespace ZVSmartModel::Tool {

using namespace ZVSmartZvg;

namespace {

constexpr unsigned int stepsOfEntry = 200;

struct ListOptions {
    std::vector<std::string> files;
    std::optional<std::string> floor, className;
    bool csv = false;
};

Document ComponentDocument(const SZVLGCompIndex& index, const SZVLGZvgComp& comp) {
    return {{"component", PlaceText(index.floorIndex, index.compIndex)},
            {"classLevel2", ToUtf8(comp.classLevel2Name)},
            {"classLevel3", ToUtf8(comp.classLevel3Name)},
            {"compGuidName", KeyText(comp.compGuidName)},
            {"properties", PropertiesOfPairs(comp.compProperties).size()},
            {"geoRefs", comp.geoRefs.size()}};
}

void List(const FileTurn& turn, const ListOptions& options, const CommonOptions& common,
          EntryList& list) {
    Budget limits(common.noLimit, "--no-limit");
    OpenedBlock block(OpenNamed(turn.file), limits, OptionsOf(common));
    const FileWalk walk(block,
                        options.floor ? FileWalk::Through::Nothing : FileWalk::Through::Elements);
    const auto [first, end] = block.FindFloors(options.floor);
    const std::wstring className = FromUtf8(options.className.value_or(""));
    list.Begin(turn.file, turn.isOneOfSeveral);
    const auto printIfWanted = [&](const SZVLGCompIndex& index, const SZVLGZvgComp& comp) {
        if (options.className && !IsOfClass(comp, className)) return;
        limits.Work(stepsOfEntry);
        limits.Work(2 * (comp.classLevel2Name.size() + comp.classLevel3Name.size() +
                         comp.compGuidName.name.size()));
        list.Print(ComponentDocument(index, comp));
    };
    for (unsigned int floor = first; floor < end; ++floor) block.ForEachComp(floor, printIfWanted);
    list.End();
    block.ThrowIfDamaged();
    if (!options.className || list.Count() != 0) return;
    throw block.ErrorAbout(Status::NotFound, "no component of class '" + *options.className + "'");
}

}  // namespace

void RegisterList(CLI::App& app, CommonOptions& common) {
    const auto options = std::make_shared<ListOptions>();
    CLI::App* const command = AddReadingCommand(
        app, "list",
        "Print one line per component: FLOOR:POS, class level 2, class level 3, GUID name, number "
        "of properties, number of geometry references",
        "zvg list house.zvg --floor 0 --class IfcWall", options->files);
    AddFloorOption(*command, options->floor);
    AddClassOption(*command, options->className);
    command->add_flag("--csv", options->csv,
                      "Print comma-separated values (RFC 4180), their names in the first line");
    AddLimitOption(*command, common);
    AddThreadsOption(*command, common.threads);
    command->callback([options, &common] {
        const ListFormat format = ListFormatOf(options->csv, common.json);
        EntryList list(format, "components", ComponentDocument({}, {}));
        ForEachFile(options->files, format == ListFormat::Text ? "\t" : "",
                    [&](const FileTurn& turn) { List(turn, *options, common, list); });
    });
}

}  // namespace ZVSmartModel::Tool
