#include <memory>
#include <optional>
#include <string>

#include "model/element/OpenedBlock.h"
#include "model/element/PropertyKinds.h"
#include "model/element/RecordNames.h"
#include "model/element/Utf8.h"
#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/reading/RecordDocument.h"
#include "tools/zvg/reading/StandardInput.h"
#include "tools/zvg/text/Csv.h"
#include "tools/zvg/text/Document.h"
#include "tools/zvg/text/JsonList.h"
#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

using namespace ZVSmartZvg;

namespace {

struct ListOptions {
    std::string file;
    std::optional<std::string> floor, className;
    bool csv = false;
};

Document EntryDocument(const SZVLGCompIndex& index, const SZVLGZvgComp& comp) {
    return {{"component", PlaceText(index.floorIndex, index.compIndex)},
            {"classLevel2", ToUtf8(comp.classLevel2Name)},
            {"classLevel3", ToUtf8(comp.classLevel3Name)},
            {"compGuidName", KeyText(comp.compGuidName)},
            {"properties", PropertiesOfPairs(comp.compProperties).size()},
            {"geoRefs", comp.geoRefs.size()}};
}

/// The entry's values, tab by tab; tabs within a value are escaped.
std::string TextLine(const Document& entry) {
    std::string line;
    for (const Document& value : entry) {
        if (!line.empty()) line += '\t';
        line +=
            value.is_string() ? EscapeControls(value.get_ref<const std::string&>()) : value.dump();
    }
    return line + '\n';
}

enum class ListFormat { Text, Csv, Json };

/// Prints entries as they come, so that a list of any length takes no memory.
class EntryPrinter {
  public:
    EntryPrinter(const std::string& file, ListFormat format, Budget& limits)
        : format(format), limits(limits) {
        if (format == ListFormat::Json) json.emplace(NewDocument(file), "components");
        if (format == ListFormat::Csv) WriteOutput(CsvHeader(EntryDocument({}, {})));
    }

    void Print(const Document& entry) {
        limits.Work(stepsOfEntry);
        if (json) {
            json->Add(entry);
        } else {
            WriteOutput(format == ListFormat::Csv ? CsvRecord(entry) : TextLine(entry));
        }
        ++count;
    }

    void End() {
        if (json) json->End();
    }

    unsigned long long Count() const { return count; }

  private:
    static constexpr unsigned int stepsOfEntry = 200;

    ListFormat format;
    Budget& limits;
    std::optional<JsonList> json;
    unsigned long long count = 0;
};

ListFormat FormatOf(const ListOptions& options, bool asJson) {
    if (options.csv && asJson) {
        throw Error(Status::Usage, "--csv and --json exclude each other");
    }
    return options.csv ? ListFormat::Csv : asJson ? ListFormat::Json : ListFormat::Text;
}

void List(const ListOptions& options, ListFormat format, bool noLimit) {
    Budget limits(noLimit, "--no-limit");
    OpenedBlock block(OpenNamed(options.file), limits);
    const auto [first, end] = block.FindFloors(options.floor);
    const std::wstring className = FromUtf8(options.className.value_or(""));
    EntryPrinter printer(options.file, format, limits);
    const auto printIfWanted = [&](const SZVLGCompIndex& index, const SZVLGZvgComp& comp) {
        if (options.className && !IsOfClass(comp, className)) return;
        limits.Work(2 * (comp.classLevel2Name.size() + comp.classLevel3Name.size() +
                         comp.compGuidName.name.size()));
        printer.Print(EntryDocument(index, comp));
    };
    for (unsigned int floor = first; floor < end; ++floor) block.ForEachComp(floor, printIfWanted);
    printer.End();
    block.ThrowIfDamaged();
    if (!options.className || printer.Count() != 0) return;
    throw block.ErrorAbout(Status::NotFound, "no component of class '" + *options.className + "'");
}

}  // namespace

void RegisterList(CLI::App& app, CommonOptions& common) {
    const auto options = std::make_shared<ListOptions>();
    CLI::App* const command = AddReadingCommand(
        app, "list",
        "Print one line per component: FLOOR:POS, class level 2, class level 3, GUID name, number "
        "of properties, number of geometry references",
        "zvg list house.zvg --floor 0 --class IfcWall", options->file);
    AddFloorOption(*command, options->floor);
    AddClassOption(*command, options->className);
    command->add_flag("--csv", options->csv,
                      "Print comma-separated values (RFC 4180), their names in the first line");
    AddLimitOption(*command, common);
    command->callback(
        [options, &common] { List(*options, FormatOf(*options, common.json), common.noLimit); });
}

}  // namespace ZVSmartModel::Tool
