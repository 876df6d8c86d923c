#pragma once

#include <vector>

#include "model/element/Budget.h"
#include "model/plan/MeshSection.h"

namespace ZVSmartModel {

/// The heights that something is looked for in: what reaches above `low` and below `high`.
struct HeightBand {
    double low, high;
};

/// A level face of a surface: a tread, where the surface is a stair.
struct LevelFace {
    double height;
    double area;  ///< square metres
    PlanPoint middle;
    std::vector<PlanPoint> corners;
};

/// What is seen of a surface.
struct SurfaceView {
    /// What it covers: closed paths, all of which turn one way around what they wind around.
    PlanArea cover;
    std::vector<PlanPath> edges;  ///< its outline, folds and steps
    std::vector<LevelFace> levels;
    HeightRange reach;  ///< of what is seen

    bool IsEmpty() const { return cover.empty() && edges.empty(); }
};

enum class SeenFrom { Above, Below };

/// Looks straight down, or up, at the part of a surface within a band. What a plane through
/// `cutAt`, one end of the band, cuts off is left out; the cut itself is no edge. Of a closed
/// surface the faces that look the other way are not seen; of an open one all are, since nobody
/// knows its outside. Takes time that grows like n log n with the surface's faces, which is
/// charged to `limits`.
SurfaceView ViewOf(const PlacedSurface& surface, const HeightBand& band, double cutAt,
                   SeenFrom from, Budget& limits);

}  // namespace ZVSmartModel
