#include <cmath>
#include <filesystem>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include "ZVSmartModel/Plan.h"
#include "model/element/BlockFileImp.h"
#include "model/element/FileSink.h"
#include "model/element/ProgressPace.h"
#include "model/plan/DxfCanvas.h"
#include "model/plan/FloorPlan.h"
#include "model/plan/PdfCanvas.h"
#include "model/plan/PlanDimensions.h"
#include "model/plan/PlanSheet.h"
#include "model/plan/Strays.h"
#include "model/plan/SvgCanvas.h"

namespace ZVSmartModel {

namespace {

/// The document; `layout` must have a cell for each floor.
std::string DocumentOf(const PlanDrawing& drawing, const std::string& title, PlanFormat format,
                       const SheetLayout& layout, PlanSummary& summary) {
    std::vector<PageSize> pages;
    for (const SheetPage& page : layout.pages) pages.push_back(page.size);
    std::unique_ptr<Canvas> canvas;
    if (format == PlanFormat::Svg) canvas = std::make_unique<SvgCanvas>(title, pages);
    if (format == PlanFormat::Pdf) canvas = MakePdfCanvas(title);
    if (format == PlanFormat::Dxf) {
        constexpr double apart = 1.5;  // widths from floor to floor
        canvas = std::make_unique<DxfCanvas>(apart * layout.extent.Width() + 1);
    }
    summary.labelsLeft = DrawSheet(drawing, title, layout, *canvas);
    return canvas->Take();
}

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
    if (!std::isfinite(options.cutHeight) || !std::isfinite(options.depth)) {
        throw Error(Status::Usage, "the height of the cut or the depth is no number of metres");
    }
    return file.Internals().Ask([&](OpenedBlock& block) {
        ProgressPace pace(progress);
        PlacedRecords records(block);
        const auto wanted = block.FindFloors(options.floor);
        const FileWalk walk(block, FileWalk::Through::Bodies);
        const auto tell = [&pace](unsigned int done, unsigned int total) {
            pace.Tell("drawing the plan", done, total);
        };
        PlanDrawing drawing = DrawFloors(
            block, records, {wanted, options.cutHeight, options.depth, options.roof, options.zones},
            tell);
        std::vector<PlanFloor>& floors = drawing.floors;
        if (!options.all) TakeOutStrays(floors);
        PlanSummary summary = SummaryOf(floors);
        // Many a model has a floor that only says something about it.
        if (!options.floor) {
            std::erase_if(floors, [](const PlanFloor& floor) { return floor.components.empty(); });
        }
        summary.floors = floors.size();
        const std::string fileName = std::filesystem::path(block.Path()).filename().string();
        const SheetLayout layout = LayOutSheet(floors.size(), ExtentOf(drawing), ApronOf(drawing),
                                               options.paper, options.scale);
        const std::string title = options.title.empty() ? fileName : options.title;
        WriteWhole(out, DocumentOf(drawing, title, options.format, layout, summary));
        summary.scale = layout.denominator;
        summary.axes = drawing.axes.size();
        std::optional<Error> damage = block.Verdict();
        if (!damage) damage = records.FirstDamage();
        if (damage) summary.lost = damage->what();
        return summary;
    });
}

}  // namespace ZVSmartModel
