#include "model/plan/ComponentDrawing.h"

#include <iterator>
#include <optional>
#include <utility>

#include "model/plan/Outlines.h"

namespace ZVSmartModel {

void ComponentDrawing::Add(const PlacedRecord& placed) {
    if (placed.styleName == L"Axis") return;  // a construction line that nobody sees
    const ZVSmartZvg::SZVLGZvgGeo& record = *placed.record;
    std::vector<PlanPath> curves = PlacedCurves(record, placed.toModel);
    for (const PlanPath& curve : curves) corners += curve.vertices.size();
    std::move(curves.begin(), curves.end(), std::back_inserter(symbol.lines));
    if (std::optional<PlanPath> outline = PlacedOutline(record, placed.toModel)) {
        symbol.areas.push_back({std::move(*outline)});
    }
    const auto keep = [this](double height, const SurfaceSection& section) {
        corners += section.size();
        Section& there = sections[height];
        const SurfaceSection rest = AddRings(section, there.closed);
        there.open.insert(there.open.end(), rest.begin(), rest.end());
    };
    CutSurfaces(record, placed.toModel, heights, limits, reach, keep);
}

std::map<double, PlanShapes> ComponentDrawing::TakeSections() {
    std::map<double, PlanShapes> taken;
    for (auto& [height, section] : sections) {
        // Some bodies are sewn of open surfaces, whose sections close together only.
        AddLines(AddRings(section.open, section.closed), section.closed);
        if (!section.closed.IsEmpty()) taken.emplace(height, std::move(section.closed));
    }
    sections.clear();
    return taken;
}

}  // namespace ZVSmartModel
