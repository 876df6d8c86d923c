#include "model/plan/Strays.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <set>
#include <utility>

#include "model/plan/PlanExtent.h"

namespace ZVSmartModel {

namespace {

constexpr double farInDiagonals = 10;
constexpr double shortestFar = 100;     // metres
constexpr std::size_t oneStrayIn = 10;  // components
constexpr std::size_t fewest = 3;       // of which one may be a stray
constexpr std::size_t mostNamed = 10;   // per floor

struct Placed {
    PlanExtent extent;
    const PlanComponent* component;
    double fromMiddle = 0;  ///< of its farthest corner
};

double MiddleOf(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Sets `fromMiddle`: the middle is the median, which strays do not move.
void Measure(std::vector<Placed>& all) {
    std::vector<double> x, y;
    for (const Placed& placed : all) {
        x.push_back((placed.extent.low.x + placed.extent.high.x) / 2);
        y.push_back((placed.extent.low.y + placed.extent.high.y) / 2);
    }
    const PlanPoint middle = {MiddleOf(std::move(x)), MiddleOf(std::move(y))};
    for (Placed& placed : all) {
        const PlanExtent& box = placed.extent;
        placed.fromMiddle = std::hypot(std::max(box.high.x - middle.x, middle.x - box.low.x),
                                       std::max(box.high.y - middle.y, middle.y - box.low.y));
    }
}

double Distance(const PlanExtent& a, const PlanExtent& b) {
    return std::hypot(std::max({a.low.x - b.high.x, b.low.x - a.high.x, 0.0}),
                      std::max({a.low.y - b.high.y, b.low.y - a.high.y, 0.0}));
}

/// Walks from the middle outwards: who is far from all that lies nearer is a stray.
std::set<const PlanComponent*> StraysAmong(std::vector<Placed>& all) {
    if (all.size() < fewest) return {};
    const std::size_t most = std::max<std::size_t>(all.size() / oneStrayIn, 1);
    Measure(all);
    std::sort(all.begin(), all.end(),
              [](const Placed& a, const Placed& b) { return a.fromMiddle < b.fromMiddle; });
    PlanExtent rest;
    std::set<const PlanComponent*> strays;
    for (std::size_t i = 0; i < all.size(); ++i) {
        const double far =
            std::max(farInDiagonals * std::hypot(rest.Width(), rest.Height()), shortestFar);
        if (i >= all.size() - most && Distance(all[i].extent, rest) > far) {
            strays.insert(all[i].component);
        } else {
            rest.Add(all[i].extent);
        }
    }
    return strays;
}

}  // namespace

void TakeOutStrays(std::vector<PlanFloor>& floors) {
    std::vector<Placed> all;
    for (const PlanFloor& floor : floors) {
        for (const PlanComponent& component : floor.components) {
            all.push_back({ExtentOf(component), &component});
        }
    }
    const std::set<const PlanComponent*> strays = StraysAmong(all);
    if (strays.empty()) return;
    for (PlanFloor& floor : floors) {
        std::vector<PlanComponent> kept;
        for (PlanComponent& component : floor.components) {
            if (!strays.contains(&component)) {
                kept.push_back(std::move(component));
                continue;
            }
            if (component.countedIn == nullptr) continue;
            --(floor.summary.*component.countedIn);
            const bool isCut = component.countedIn == &PlanFloorSummary::cut;
            if (isCut && component.visits) --floor.summary.visiting;
            if (++floor.summary.leftFar > mostNamed) continue;
            floor.summary.strays.push_back(component.identity + ' ' + component.name);
        }
        floor.components = std::move(kept);
    }
}

}  // namespace ZVSmartModel
