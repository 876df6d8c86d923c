#pragma once

#include <cstdint>
#include <vector>

#include "ZVSmartZvg/Geo.h"

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

/// Cuts the surfaces of the record itself (shells, visual shells, poly face meshes, meshes and
/// the triangles of render meshes) by the horizontal plane at `height`. A corner in the plane
/// counts as above it, so that a closed surface gives closed loops. One entry per surface that is
/// cut; faces whose indices lead nowhere, and those with a coordinate that is not finite or
/// beyond 10,000 km, are left out, so untrusted records are safe.
std::vector<SurfaceSection> CutSurfaces(const ZVSmartZvg::SZVLGZvgGeo& record,
                                        const ZVSmartZvg::CZVIMTransf& toModel, double height);

}  // namespace ZVSmartModel
