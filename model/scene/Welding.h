#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <unordered_map>

#include "ZVSmartModel/Values.h"

namespace ZVSmartModel {

/// Numbers places: points that agree to the micrometre have one number.
class Welding {
  public:
    /// The place of a point, counted from 0; any coordinates are taken.
    std::uint32_t Number(const Point& point);

  private:
    using Cell = std::array<std::uint64_t, 3>;
    struct Hash {
        std::size_t operator()(const Cell& cell) const;
    };

    std::unordered_map<Cell, std::uint32_t, Hash> numbers;
};

}  // namespace ZVSmartModel
