#include <filesystem>
#include <utility>
#include <vector>

#include "ZVSmartModel/Plan.h"
#include "model/element/BlockFileImp.h"
#include "model/element/FileSink.h"
#include "model/element/ProgressPace.h"
#include "model/plan/FloorPlan.h"
#include "model/plan/SvgSheet.h"

namespace ZVSmartModel {

namespace {

std::vector<PlanFloor> DrawFloors(OpenedBlock& block, PlacedRecords& records,
                                  const std::optional<std::string>& wanted, ProgressPace& pace) {
    const auto [first, end] = block.FindFloors(wanted);
    std::vector<PlanFloor> floors;
    for (unsigned int floor = first; floor < end; ++floor) {
        const auto tell = [&pace, done = floor - first, total = end - first] {
            pace.Tell("drawing the plan", done, total);
        };
        const auto draw = [&] {
            PlanFloor plan = DrawFloor(block, records, floor, tell);
            // Many a model has a floor that only says something about it.
            if (wanted || !plan.components.empty()) floors.push_back(std::move(plan));
        };
        if (!block.Within("floor " + std::to_string(floor), draw)) break;
    }
    return floors;
}

}  // namespace

PlanSummary WritePlan(const BlockFile& file, ZVSmartFormat::CZVFTOutStream& out,
                      const PlanOptions& options, const Progress& progress) {
    return file.Internals().Ask([&](OpenedBlock& block) {
        ProgressPace pace(progress);
        PlacedRecords records(block);
        const std::vector<PlanFloor> floors = DrawFloors(block, records, options.floor, pace);
        const std::string fileName = std::filesystem::path(block.Path()).filename().string();
        WriteWhole(out, SvgSheet(options.title.empty() ? fileName : options.title, floors));

        PlanSummary summary;
        summary.floors = floors.size();
        for (const PlanFloor& floor : floors) summary.elements += floor.components.size();
        std::optional<Error> damage = block.Verdict();
        if (!damage) damage = records.FirstDamage();
        if (damage) summary.lost = damage->what();
        return summary;
    });
}

}  // namespace ZVSmartModel
