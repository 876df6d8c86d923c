#include "model/plan/ComponentDrawing.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "model/plan/Outlines.h"

namespace ZVSmartModel {

namespace {

std::size_t CornersOf(const std::vector<PlanPath>& paths) {
    std::size_t corners = 0;
    for (const PlanPath& path : paths) corners += path.vertices.size();
    return corners;
}

void Append(std::vector<PlanPath>& to, std::vector<PlanPath> from) {
    std::move(from.begin(), from.end(), std::back_inserter(to));
}

}  // namespace

ComponentDrawing::ComponentDrawing(const FloorLevels& levels, std::optional<std::size_t> own,
                                   const Kind& kind, Budget& limits)
    : levels(levels), own(own), kind(kind), limits(limits) {
    if (!own) return;
    const double plane = levels.Of(*own).plane;
    const std::vector<double>& planes = levels.Planes();
    if (kind.staysHome || !std::binary_search(planes.begin(), planes.end(), plane)) {
        ownPlane = {plane};
    }
}

void ComponentDrawing::Add(const PlacedRecord& placed) {
    if (placed.styleName == L"Axis") return;  // a construction line that nobody sees
    const ZVSmartZvg::SZVLGZvgGeo& record = *placed.record;
    std::vector<PlanPath> curves = PlacedCurves(record, placed.toModel);
    corners += CornersOf(curves);
    Append(symbol.lines, std::move(curves));
    for (PlanPath& outline : PlacedOutlines(record, placed.toModel)) {
        symbol.areas.push_back({std::move(outline)});
    }
    const auto keep = [this](double height, const SurfaceSection& section) {
        corners += section.size();
        Section& there = sections[height];
        const SurfaceSection rest = AddRings(section, there.closed);
        there.open.insert(there.open.end(), rest.begin(), rest.end());
    };
    ForEachSurface(record, placed.toModel, [&](const PlacedSurface& surface) {
        if (surface.FaceCount() == 0) return;
        if (!placement) placement = placed.toModel;
        reach.Add(surface.Range());
        for (std::size_t i = 0; i < surface.FaceCount(); ++i) {
            for (const std::size_t corner : surface.Face(i)) {
                const auto& point = surface.Points()[corner];
                bodyExtent.Add(PlanPoint{point.GetX(), point.GetY()});
            }
        }
        if (!kind.staysHome) CutSurface(surface, levels.Planes(), limits, keep);
        CutSurface(surface, ownPlane, limits, keep);
        AddViews(surface);
    });
}

/// The plans with views that may show what reaches so far of the component.
std::vector<std::size_t> ComponentDrawing::Seeing(const HeightRange& range) const {
    if (!kind.staysHome) return levels.Seeing(range);
    if (own && levels.Of(*own).hasViews) return {*own};
    return {};
}

void ComponentDrawing::AddViews(const PlacedSurface& surface) {
    const HeightRange& range = surface.Range();
    const std::vector<std::size_t> plans = Seeing(range);
    limits.Work(10 + plans.size());
    for (const std::size_t plan : plans) {
        const PlanHeights& heights = levels.Of(plan);
        ComponentViews& seen = views[plan];
        if (range.high > heights.bottom && range.low < heights.plane) {
            AddViewBelow(surface, heights, seen);
        }
        if (range.high > heights.plane && range.low < heights.next) {
            const SeenFrom side = kind.isStair ? SeenFrom::Above : SeenFrom::Below;
            SurfaceView view =
                ViewOf(surface, {heights.plane, heights.next}, heights.plane, side, limits);
            corners += CornersOf(view.cover) + CornersOf(view.edges);
            Append(seen.above.lines, kind.isStair ? std::move(view.edges) : std::move(view.cover));
        }
    }
}

void ComponentDrawing::AddViewBelow(const PlacedSurface& surface, const PlanHeights& heights,
                                    ComponentViews& seen) {
    SurfaceView view =
        ViewOf(surface, {heights.bottom, heights.plane}, heights.plane, SeenFrom::Above, limits);
    corners += CornersOf(view.cover) + CornersOf(view.edges);
    if (kind.isStair) {
        std::move(view.levels.begin(), view.levels.end(), std::back_inserter(seen.levels));
    }
    seen.belowReach.Add(view.reach);
    if (view.IsEmpty()) return;
    seen.below.parts.push_back({std::move(view.cover), std::move(view.edges), view.reach.high});
}

void ComponentDrawing::Finish() {
    for (auto& [height, section] : sections) {
        // Some bodies are sewn of open surfaces, whose sections close together only.
        AddLines(AddRings(section.open, section.closed), section.closed);
        section.open.clear();
    }
    for (auto& [plan, seen] : views) {
        std::stable_sort(seen.below.parts.begin(), seen.below.parts.end(),
                         [](const PlanPart& a, const PlanPart& b) { return a.top < b.top; });
    }
}

std::vector<std::size_t> ComponentDrawing::Plans() const {
    std::vector<std::size_t> plans = Seeing(reach);
    if (!own) return plans;
    const auto place = std::lower_bound(plans.begin(), plans.end(), *own);
    if (place == plans.end() || *place != *own) plans.insert(place, *own);
    return plans;
}

const ComponentViews& ComponentDrawing::Views(std::size_t plan) const {
    static const ComponentViews nothing;
    const auto found = views.find(plan);
    return found == views.end() ? nothing : found->second;
}

const PlanShapes* ComponentDrawing::SectionAt(double plane) const {
    const auto found = sections.find(plane);
    const bool isThere = found != sections.end() && !found->second.closed.IsEmpty();
    return isThere ? &found->second.closed : nullptr;
}

bool ComponentDrawing::SymbolLiesOnBody() const {
    if (bodyExtent.IsEmpty()) return true;
    constexpr double slack = 0.05;  // metres
    const PlanExtent box = ExtentOf(symbol);
    const double size = std::hypot(bodyExtent.Width(), bodyExtent.Height()) + slack;
    const auto shared = [](double lowA, double highA, double lowB, double highB) {
        return std::min(highA, highB) + slack - std::max(lowA, lowB);
    };
    const double wide = shared(box.low.x, box.high.x, bodyExtent.low.x, bodyExtent.high.x);
    const double high = shared(box.low.y, box.high.y, bodyExtent.low.y, bodyExtent.high.y);
    if (!(wide >= bodyExtent.Width() / 2 && high >= bodyExtent.Height() / 2)) return false;
    return box.low.x > bodyExtent.low.x - size && box.high.x < bodyExtent.high.x + size &&
           box.low.y > bodyExtent.low.y - size && box.high.y < bodyExtent.high.y + size;
}

std::size_t CornersOf(const PlanShapes& shapes) {
    std::size_t corners = CornersOf(shapes.lines);
    for (const PlanArea& area : shapes.areas) corners += CornersOf(area);
    for (const PlanPart& part : shapes.parts)
        corners += CornersOf(part.cover) + CornersOf(part.edges);
    return corners;
}

}  // namespace ZVSmartModel
