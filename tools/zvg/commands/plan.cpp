#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Reading.h"
#include "tools/zvg/output/OutputFile.h"
#include "tools/zvg/plan/FloorPlan.h"
#include "tools/zvg/plan/SvgSheet.h"
#include "tools/zvg/text/StandardOutput.h"

namespace {

struct Arguments {
    std::string file, floor, output;
    CLI::Option* floorOption = nullptr;
    bool force = false;
};

std::vector<PlanFloor> DrawFloors(OpenedBlock& block, PlacedRecords& records,
                                  const Arguments& arguments) {
    unsigned int first = 0;
    unsigned int end = block.Reader().GetFloorNum();
    if (arguments.floorOption->count() != 0) {
        first = block.FindFloor(arguments.floor);
        end = first + 1;
    }
    std::vector<PlanFloor> floors;
    for (unsigned int floor = first; floor < end; ++floor) {
        floors.push_back(DrawFloor(block, records, floor));
    }
    return floors;
}

std::string Told(const std::vector<PlanFloor>& floors) {
    std::size_t components = 0;
    for (const PlanFloor& floor : floors) components += floor.components.size();
    return std::to_string(components) + (components == 1 ? " component on " : " components on ") +
           std::to_string(floors.size()) + (floors.size() == 1 ? " floor" : " floors");
}

void Plan(const Arguments& arguments, const CommonOptions& common) {
    OpenedBlock block(arguments.file);
    std::optional<OutputFile> output;
    if (!arguments.output.empty()) output.emplace(arguments.output, arguments.force);
    PlacedRecords records(block);
    const std::vector<PlanFloor> floors = DrawFloors(block, records, arguments);
    const std::string title = std::filesystem::path(arguments.file).filename().string();
    const std::string svg = SvgSheet(title, floors);
    if (!output) {
        WriteOutput(svg);
    } else {
        output->Fill(
            [&svg](ZVSmartFormat::CZVFTOutStream& sink) { sink.Write(svg.data(), svg.size()); });
        output->Commit();
        if (!common.quiet) WriteMessage(TargetName(arguments.output) + ": " + Told(floors));
    }
    block.ThrowIfDamaged();
    records.ThrowIfDamaged();
}

}  // namespace

void RegisterPlan(CLI::App& app, CommonOptions& common) {
    const auto arguments = std::make_shared<Arguments>();
    CLI::App* const command = AddReadingCommand(
        app, "plan",
        "Draw floors as an SVG plan: outlines, or sections 1.2 m above the floor; lengths are "
        "metres, as pack writes them",
        "zvg plan house.zvg --floor 0 -o ground.svg", arguments->file);
    arguments->floorOption = command->add_option(
        "--floor", arguments->floor, "One floor, by its number or its name (default: all)");
    command->add_option("-o,--output", arguments->output,
                        "The SVG file to write; - and the default are standard output");
    command->add_flag("--force", arguments->force, "Replace an existing output file");
    command->callback([arguments, &common] { Plan(*arguments, common); });
}
