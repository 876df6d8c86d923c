#include "processing/MeetingPoints.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "ZVIM/Config.h"

namespace ZVSmartZvg {

namespace {

using ZVIM::GeometryPrimitiveResource::CZVIMGeoModelConfig;

// Even steps are eight to sixteen tolerances wide, and there are 2^46 of them on either side of 0.
// What follows are steps of 64 units in the last place. Both are at least twice as wide as what
// coincides may lie apart, so that it lies in one step or in two neighbours.
constexpr int stepExponent = 4;
constexpr int evenStepsExponent = 46;
constexpr int droppedBits = 6;

/// What counts as rounding: four to eight units in the last place.
double Rounding(double coordinate) {
    return 4 * std::numeric_limits<double>::epsilon() * std::fabs(coordinate);
}

/// How far two coordinates lie apart beyond rounding.
double Beyond(double a, double b) {
    return std::max(0.0, std::fabs(a - b) - std::max(Rounding(a), Rounding(b)));
}

double Gap(const CZVIMPosition& a, const CZVIMPosition& b) {
    return std::hypot(Beyond(a.GetX(), b.GetX()), Beyond(a.GetY(), b.GetY()));
}

}  // namespace

MeetingPoints::MeetingPoints()
    : tolerance(CZVIMGeoModelConfig::getabs()),
      stepWidth(std::ldexp(1.0, std::ilogb(tolerance) + stepExponent)),
      evenStepsEnd(std::ldexp(stepWidth, evenStepsExponent)) {}

std::int64_t MeetingPoints::StepOf(double coordinate) const {
    const double size = std::fabs(coordinate);
    if (size < evenStepsEnd) return static_cast<std::int64_t>(std::floor(coordinate / stepWidth));
    std::int64_t bits = 0;
    static_assert(sizeof bits == sizeof size);
    std::memcpy(&bits, &size, sizeof bits);  // they grow with the number that they stand for
    return std::signbit(coordinate) ? -1 - (bits >> droppedBits) : bits >> droppedBits;
}

std::pair<std::int64_t, std::int64_t> MeetingPoints::StepsAround(double coordinate) const {
    // Twice the rounding, since that of the other point may be a little more.
    const double reach = tolerance + 2 * Rounding(std::fabs(coordinate) + tolerance);
    return {StepOf(coordinate - reach), StepOf(coordinate + reach)};
}

std::size_t MeetingPoints::NumberOf(const CZVIMPosition& point) {
    const auto [left, right] = StepsAround(point.GetX());
    const auto [below, above] = StepsAround(point.GetY());
    std::size_t nearest = points.size();
    double smallestGap = tolerance;
    const auto lookInto = [&](const Cell& cell) {
        const auto [begin, end] = numberInCell.equal_range(cell);
        for (auto entry = begin; entry != end; ++entry) {
            const double gap = Gap(points[entry->second], point);
            if (gap > smallestGap || (gap == smallestGap && entry->second > nearest)) continue;
            smallestGap = gap;
            nearest = entry->second;
        }
    };
    lookInto({left, below});
    if (left != right) lookInto({right, below});
    if (below != above) lookInto({left, above});
    if (left != right && below != above) lookInto({right, above});
    if (nearest == points.size()) {
        points.push_back(point);
        numberInCell.emplace(Cell{StepOf(point.GetX()), StepOf(point.GetY())}, nearest);
    }
    return nearest;
}

}  // namespace ZVSmartZvg
