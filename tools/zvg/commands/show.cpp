#include <memory>
#include <string>

#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Reading.h"
#include "tools/zvg/reading/OpenedBlock.h"
#include "tools/zvg/reading/RecordDocument.h"
#include "tools/zvg/text/Document.h"

using namespace ZVSmartZvg;

namespace {

/// Floors' names may hold colons, so the last one ends the floor.
SZVLGCompIndex FindComp(OpenedBlock& block, const std::string& place) {
    const std::size_t colon = place.rfind(':');
    if (colon == std::string::npos) {
        throw ToolError(ExitStatus::Usage, "'" + place + "' is no FLOOR:POS (see zvg show --help)");
    }
    const std::optional<unsigned int> position = ParseNumber(place.substr(colon + 1));
    if (!position) {
        throw ToolError(ExitStatus::Usage, "'" + place + "' has no position behind its last colon");
    }
    const unsigned int floor = block.FindFloor(place.substr(0, colon));
    const bool there = *position < block.FloorCompNum(floor);
    block.ThrowIfDamaged();
    if (!there) throw block.Error(ExitStatus::NotFound, "no component " + place);
    return {floor, *position};
}

void Show(const std::string& file, const std::string& place, bool asJson) {
    OpenedBlock block(file);
    const SZVLGCompIndex index = FindComp(block, place);
    SZVLGZvgComp comp;
    block.ReadComp(index, comp);
    block.ThrowIfDamaged();
    Document document = NewDocument(file);
    document["component"] = PlaceText(index.floorIndex, index.compIndex);
    document.update(CompDocument(comp));
    PrintDocument(document, asJson);
}

}  // namespace

void RegisterShow(CLI::App& app, CommonOptions& common) {
    const auto file = std::make_shared<std::string>();
    const auto place = std::make_shared<std::string>();
    CLI::App* const command =
        AddReadingCommand(app, "show", "Print everything that is stored of one component",
                          "zvg show house.zvg 0:3", *file);
    command
        ->add_option("FLOOR:POS", *place,
                     "The component: its floor, by number or name, and its position there")
        ->required();
    command->callback([file, place, &common] { Show(*file, *place, common.json); });
}
