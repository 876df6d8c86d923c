#include <cmath>
#include <filesystem>
#include <set>
#include <utility>
#include <vector>

#include "ZVSmartModel/Plan.h"
#include "model/element/BlockFileImp.h"
#include "model/element/FileSink.h"
#include "model/element/ProgressPace.h"
#include "model/plan/FloorPlan.h"
#include "model/plan/Strays.h"
#include "model/plan/SvgSheet.h"

namespace ZVSmartModel {

namespace {

PlanSummary SummaryOf(const std::vector<PlanFloor>& floors) {
    PlanSummary summary;
    std::set<std::pair<unsigned int, unsigned int>> drawn;
    for (const PlanFloor& floor : floors) {
        for (const PlanComponent& component : floor.components) {
            drawn.emplace(component.index.floorIndex, component.index.compIndex);
        }
        summary.perFloor.push_back(floor.summary);
    }
    summary.elements = drawn.size();
    return summary;
}

}  // namespace

PlanSummary WritePlan(const BlockFile& file, ZVSmartFormat::CZVFTOutStream& out,
                      const PlanOptions& options, const Progress& progress) {
    if (!std::isfinite(options.cutHeight)) {
        throw Error(Status::Usage, "the height of the cut is no number of metres");
    }
    return file.Internals().Ask([&](OpenedBlock& block) {
        ProgressPace pace(progress);
        PlacedRecords records(block);
        const auto wanted = block.FindFloors(options.floor);
        const auto tell = [&pace](unsigned int done, unsigned int total) {
            pace.Tell("drawing the plan", done, total);
        };
        std::vector<PlanFloor> floors = DrawFloors(block, records, wanted, options.cutHeight, tell);
        if (!options.all) TakeOutStrays(floors);
        PlanSummary summary = SummaryOf(floors);
        // Many a model has a floor that only says something about it.
        if (!options.floor) {
            std::erase_if(floors, [](const PlanFloor& floor) { return floor.components.empty(); });
        }
        summary.floors = floors.size();
        const std::string fileName = std::filesystem::path(block.Path()).filename().string();
        WriteWhole(out, SvgSheet(options.title.empty() ? fileName : options.title, floors));
        std::optional<Error> damage = block.Verdict();
        if (!damage) damage = records.FirstDamage();
        if (damage) summary.lost = damage->what();
        return summary;
    });
}

}  // namespace ZVSmartModel
