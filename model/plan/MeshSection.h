#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

#include "ZVSmartZvg/Geo.h"
#include "model/element/Budget.h"

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

/// How far up and down something reaches, in metres.
struct HeightRange {
    double low = std::numeric_limits<double>::infinity();  ///< above `high` while there is nothing
    double high = -std::numeric_limits<double>::infinity();

    void Add(double z) {
        low = std::min(low, z);
        high = std::max(high, z);
    }
    bool IsEmpty() const { return !(low <= high); }
    /// What lies in the plane counts as above it.
    bool IsCutAt(double height) const { return low < height && height <= high; }
};

using UseSection = std::function<void(double height, const SurfaceSection& section)>;

/// Cuts the surfaces of the record itself (shells, visual shells, poly face meshes, meshes and
/// the triangles of render meshes) by the horizontal planes at `heights`, which ascend. A corner
/// in a plane counts as above it, so that a closed surface gives closed loops. Each surface's
/// section at each height is handed to `use`, and `range` grows by all faces. A face meets only
/// the planes that it reaches, so time goes with the faces and with what is cut; that is charged
/// to `limits`. Faces whose indices lead nowhere, and those with a coordinate that is not finite
/// or beyond 1,000,000 km, are left out, so untrusted records are safe.
void CutSurfaces(const ZVSmartZvg::SZVLGZvgGeo& record, const ZVSmartZvg::CZVIMTransf& toModel,
                 const std::vector<double>& heights, Budget& limits, HeightRange& range,
                 const UseSection& use);

}  // namespace ZVSmartModel
