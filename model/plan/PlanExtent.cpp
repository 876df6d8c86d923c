#include "model/plan/PlanExtent.h"

#include <algorithm>

#include "model/plan/Arc.h"

namespace ZVSmartModel {

namespace {

void AddPath(PlanExtent& extent, const PlanPath& path) {
    const std::size_t count = path.vertices.size();
    for (std::size_t i = 0; i < count; ++i) {
        const PlanVertex& from = path.vertices[i];
        const PlanPoint& to = path.vertices[(i + 1) % count].point;
        extent.Add(from.point);
        const bool drawn = path.closed || i + 1 < count;
        if (!drawn || !IsArc(from.point, to, from.bulge)) continue;
        constexpr int samples = 16;  // misses at most half a percent of the radius
        for (int sample = 1; sample < samples; ++sample) {
            extent.Add(ArcPoint(from.point, to, from.bulge, static_cast<double>(sample) / samples));
        }
    }
}

}  // namespace

void PlanExtent::Add(const PlanPoint& point) {
    low = {std::min(low.x, point.x), std::min(low.y, point.y)};
    high = {std::max(high.x, point.x), std::max(high.y, point.y)};
}

void PlanExtent::Add(const PlanExtent& other) {
    low = {std::min(low.x, other.low.x), std::min(low.y, other.low.y)};
    high = {std::max(high.x, other.high.x), std::max(high.y, other.high.y)};
}

PlanExtent ExtentOf(const PlanShapes& shapes) {
    PlanExtent extent;
    for (const PlanArea& area : shapes.areas) {
        for (const PlanPath& path : area) AddPath(extent, path);
    }
    for (const PlanPath& path : shapes.lines) AddPath(extent, path);
    for (const PlanPart& part : shapes.parts) {
        for (const PlanPath& path : part.cover) AddPath(extent, path);
        for (const PlanPath& path : part.edges) AddPath(extent, path);
    }
    return extent;
}

PlanExtent ExtentOf(const PlanFloor& floor) {
    PlanExtent extent;
    for (const PlanComponent& component : floor.components) extent.Add(ExtentOf(component));
    return extent;
}

}  // namespace ZVSmartModel
