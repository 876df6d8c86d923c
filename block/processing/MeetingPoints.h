#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "ZVIM/Position.h"

namespace ZVSmartZvg {

using ZVIM::GeometryPrimitiveResource::CZVIMPosition;

/// Points of the XOY plane, numbered from 0, in which points that coincide are one: those no
/// farther apart than the length tolerance of the process, beyond what a few units in the last
/// place of each coordinate make up. The first point that comes stands for those that follow.
///
/// A look-up takes time that grows like log n, whatever the points are: they stand in a grid
/// whose cells are some tolerances wide, so that few points that do not coincide fit into one.
class MeetingPoints {
  public:
    MeetingPoints();

    /// The number of the point that is nearest among those that coincide with `point`; of a new
    /// one where none does. The coordinates are finite; Z is not looked at.
    std::size_t NumberOf(const CZVIMPosition& point);

    /// All points, by their numbers.
    const std::vector<CZVIMPosition>& Points() const { return points; }

  private:
    using Cell = std::pair<std::int64_t, std::int64_t>;

    std::int64_t StepOf(double coordinate) const;
    /// The steps into which coordinates fall that coincide with this one; they may be the same.
    std::pair<std::int64_t, std::int64_t> StepsAround(double coordinate) const;

    double tolerance;
    double stepWidth;     ///< of the grid near 0, a power of two
    double evenStepsEnd;  ///< from here on a step is so many units in the last place
    std::vector<CZVIMPosition> points;
    std::multimap<Cell, std::size_t> numberInCell;
};

}  // namespace ZVSmartZvg
