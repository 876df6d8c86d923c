#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "model/plan/FloorPlan.h"
#include "model/plan/SvgSheet.h"
#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/output/OutputFile.h"
#include "tools/zvg/reading/StandardInput.h"
#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

namespace {

struct Arguments {
    std::string file;
    Target target;
    std::optional<std::string> floor;
};

std::vector<PlanFloor> DrawFloors(OpenedBlock& block, PlacedRecords& records,
                                  const Arguments& arguments) {
    const auto [first, end] = block.FindFloors(arguments.floor);
    std::vector<PlanFloor> floors;
    for (unsigned int floor = first; floor < end; ++floor) {
        const auto draw = [&] {
            PlanFloor plan = DrawFloor(block, records, floor);
            // Many a model has a floor that only says something about it.
            if (arguments.floor || !plan.components.empty()) floors.push_back(std::move(plan));
        };
        if (!block.Within("floor " + std::to_string(floor), draw)) break;
    }
    return floors;
}

std::string Told(const std::vector<PlanFloor>& floors) {
    std::size_t components = 0;
    for (const PlanFloor& floor : floors) components += floor.components.size();
    return std::to_string(components) + (components == 1 ? " component on " : " components on ") +
           std::to_string(floors.size()) + (floors.size() == 1 ? " floor" : " floors");
}

void CheckName(const std::string& path) {
    const std::string extension = std::filesystem::path(path).extension().string();
    if (path.empty() || path == "-" || extension == ".svg" || extension == ".SVG") return;
    throw Error(Status::Usage, path + ": the name must end in .svg, as a plan is SVG");
}

/// Throws Error Damaged for what could not be drawn.
void ThrowIfPartial(const OpenedBlock& block, const PlacedRecords& records) {
    block.ThrowIfDamaged();
    records.ThrowIfDamaged();
}

void Plan(const Arguments& arguments, const CommonOptions& common) {
    CheckName(arguments.target.path);
    Budget limits(common.noLimit, "--no-limit");
    OpenedBlock block(OpenNamed(arguments.file), limits);
    std::optional<OutputFile> output;
    if (!arguments.target.path.empty()) {
        output.emplace(arguments.target.path, arguments.target.force,
                       std::vector<std::string>{arguments.file});
    }
    PlacedRecords records(block);
    const std::vector<PlanFloor> floors = DrawFloors(block, records, arguments);
    // What stands there may be whole.
    if (output && output->Replaces()) ThrowIfPartial(block, records);
    const std::string title = std::filesystem::path(arguments.file).filename().string();
    const std::string svg = SvgSheet(title, floors);
    if (!output) {
        WriteOutput(svg);
    } else {
        output->Fill(
            [&svg](ZVSmartFormat::CZVFTOutStream& sink) { sink.Write(svg.data(), svg.size()); });
        output->Commit();
        if (!common.quiet) WriteMessage(TargetName(arguments.target.path) + ": " + Told(floors));
    }
    ThrowIfPartial(block, records);
}

}  // namespace

void RegisterPlan(CLI::App& app, CommonOptions& common) {
    const auto arguments = std::make_shared<Arguments>();
    CLI::App* const command = AddReadingCommand(
        app, "plan",
        "Draw floors as an SVG plan: outlines, or sections 1.2 m above the floor; lengths are "
        "metres, as pack writes them",
        "zvg plan house.zvg --floor 0 -o ground.svg", arguments->file);
    AddTargetOptions(*command, "The SVG file to write; - and the default are standard output",
                     arguments->target);
    AddFloorOption(*command, arguments->floor);
    AddLimitOption(*command, common);
    command->callback([arguments, &common] { Plan(*arguments, common); });
}

}  // namespace ZVSmartModel::Tool
