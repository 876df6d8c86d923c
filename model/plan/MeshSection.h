#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "model/element/Budget.h"
#include "model/plan/Drawing.h"
#include "model/plan/PlacedSurface.h"

namespace ZVSmartModel {

/// A point of a section on a grid of `sectionStep`: ends of pieces that meet are equal.
struct SectionPoint {
    std::int64_t x = 0, y = 0;

    friend auto operator<=>(const SectionPoint&, const SectionPoint&) = default;
};

/// 0.1 mm: above what rounding moves, below what a plan shows.
constexpr double sectionStep = 1e-4;

struct SectionPiece {
    SectionPoint from, to;
};

/// Where one surface is cut.
using SurfaceSection = std::vector<SectionPiece>;

using UseSection = std::function<void(double height, const SurfaceSection& section)>;

/// Cuts a surface by the horizontal planes at `heights`, which ascend. A corner in a plane counts
/// as above it, so that a closed surface gives closed loops. Its section at each height is handed
/// to `use`. A face meets only the planes that it reaches, so time goes with the faces and with
/// what is cut; that is charged to `limits`.
void CutSurface(const PlacedSurface& surface, const std::vector<double>& heights, Budget& limits,
                const UseSection& use);

}  // namespace ZVSmartModel
