#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ZVSmartModel/BlockFile.h"
#include "model/element/OpenedBlock.h"
#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/reading/InputFiles.h"
#include "tools/zvg/reading/Lookup.h"
#include "tools/zvg/reading/StandardInput.h"
#include "tools/zvg/text/Document.h"
#include "tools/zvg/text/EntryList.h"

namespace ZVSmartModel::Tool {

namespace {

struct PropsArguments {
    std::vector<std::string> files;
    std::optional<std::string> floor, className, guid;
    std::vector<std::string> where;
    bool csv = false;
};

Document PropertyDocument(const Element& element, const Property& property) {
    return {{"component", PlaceText(element.index.floor, element.index.position)},
            {"guid", element.guid},
            {"class", element.className},
            {"name", property.FullName()},
            {"value", property.value},
            {"unit", property.unit}};
}

Selection SelectionOf(const BlockFile& file, const std::string& path,
                      const PropsArguments& arguments) {
    Selection selection;
    selection.floor = arguments.floor;
    if (arguments.className) selection.classNames = {*arguments.className};
    selection.properties = PropertyTests(arguments.where);
    if (arguments.guid) selection.elements = FindElements(file, path, *arguments.guid);
    return selection;
}

void Props(const FileTurn& turn, const PropsArguments& arguments, const CommonOptions& common,
           EntryList& list) {
    const BlockFile file = OpenBlockFile(turn.file, common);
    const Selection selection = SelectionOf(file, turn.file, arguments);
    list.Begin(turn.file, turn.isOneOfSeveral);
    bool isAny = false;
    file.ForEach(selection, [&](const Element& element) {
        isAny = true;
        for (const Property& property : element.properties) {
            list.Print(PropertyDocument(element, property));
        }
        return true;
    });
    list.End();
    ThrowIfDamaged(file);
    const bool isNamed = arguments.className || !arguments.where.empty();
    if (isNamed && !isAny)
        throw Error(Status::NotFound, InputName(turn.file) + ": no such component");
}

}  // namespace

void RegisterProps(CLI::App& app, CommonOptions& common) {
    const auto arguments = std::make_shared<PropsArguments>();
    CLI::App* const command = AddReadingCommand(
        app, "props",
        "Print one line per property: FLOOR:POS, GUID name, class, SET.NAME, value, unit",
        "zvg props house.zvg --class IfcDoor --where Pset_DoorCommon.IsExternal=true",
        arguments->files);
    AddFloorOption(*command, arguments->floor);
    AddClassOption(*command, arguments->className);
    command->add_option("--guid", arguments->guid,
                        "Only the components of this GUID or this name, or at this FLOOR:POS");
    AddWhereOption(*command, arguments->where);
    command->add_flag("--csv", arguments->csv,
                      "Print comma-separated values (RFC 4180), their names in the first line");
    AddLimitOption(*command, common);
    AddThreadsOption(*command, common.threads);
    command->callback([arguments, &common] {
        const ListFormat format = ListFormatOf(arguments->csv, common.json);
        EntryList list(format, "properties", PropertyDocument({}, {}));
        ForEachFile(arguments->files, format == ListFormat::Text ? "\t" : "",
                    [&](const FileTurn& turn) { Props(turn, *arguments, common, list); });
    });
}

}  // namespace ZVSmartModel::Tool
