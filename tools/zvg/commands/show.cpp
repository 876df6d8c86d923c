#include <memory>
#include <string>

#include "model/element/BlockFileImp.h"
#include "model/element/PropertyKinds.h"
#include "model/element/RecordBytes.h"
#include "model/element/Utf8.h"
#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/reading/Lookup.h"
#include "tools/zvg/reading/RecordDocument.h"
#include "tools/zvg/reading/StandardInput.h"
#include "tools/zvg/text/Document.h"
#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

using namespace ZVSmartZvg;

namespace {

struct ShowArguments {
    std::string file, place;
    bool onlyProperties = false;
};

/// A name and its value, with the unit, on one line each; tabs within either are escaped.
void PrintProperties(const PropertyList& properties) {
    for (const StoredProperty& property : PropertiesOfPairs(properties)) {
        WriteOutput(EscapeControls(ToUtf8(property.name)) + '\t' +
                    EscapeControls(ToUtf8(ValueWithUnit(property))) + '\n');
    }
}

void PrintComp(const SZVLGCompIndex& index, const SZVLGZvgComp& comp,
               const ShowArguments& arguments, bool asJson) {
    Document document = NewDocument(arguments.file);
    document["component"] = PlaceText(index.floorIndex, index.compIndex);
    if (!arguments.onlyProperties) {
        document.update(CompDocument(comp));
    } else if (asJson) {
        document["compProperties"] = PropertiesDocument(comp.compProperties);
    } else {
        PrintProperties(comp.compProperties);
        return;
    }
    PrintDocument(document, asJson);
}

void Show(const ShowArguments& arguments, const CommonOptions& common) {
    const BlockFile file = OpenBlockFile(arguments.file, common);
    const ElementIndex place = FindElement(file, arguments.file, arguments.place);
    file.Internals().Ask([&](OpenedBlock& block) {
        const SZVLGCompIndex index = {place.floor, place.position};
        SZVLGZvgComp comp;
        if (block.ReadComp(index, comp)) {
            block.Limits().Memory(10 * BytesOf(comp));  // as documents
            block.Limits().Work(BytesOf(comp));
            PrintComp(index, comp, arguments, common.json);
        }
        block.ThrowIfDamaged();
    });
}

}  // namespace

void RegisterShow(CLI::App& app, CommonOptions& common) {
    const auto arguments = std::make_shared<ShowArguments>();
    CLI::App* const command =
        AddReadingCommand(app, "show", "Print everything that is stored of one component",
                          "zvg show house.zvg 0:3", arguments->file);
    command
        ->add_option("FLOOR:POS|GUID|NAME", arguments->place,
                     "The component: its floor, by number or name, and its position there; its "
                     "GUID name; or what it is called")
        ->required();
    command->add_flag("--properties", arguments->onlyProperties,
                      "Only its properties: name, tab and value with its unit, one to a line");
    AddLimitOption(*command, common);
    AddThreadsOption(*command, common.threads);
    command->callback([arguments, &common] { Show(*arguments, common); });
}

}  // namespace ZVSmartModel::Tool
