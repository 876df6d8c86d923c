#pragma once

#include <vector>

#include "model/plan/MeshSection.h"

namespace ZVSmartModel {

/// A section, taken apart.
struct SplitSection {
    /// Simple loops of at least 3 pieces: each piece begins where the one before it ends.
    std::vector<SurfaceSection> rings;
    /// What closes no loop.
    SurfaceSection rest;
};

/// Takes a section apart into loops that visit no point twice, whichever way the pieces run. Takes
/// time that grows like n log n.
SplitSection SplitIntoRings(const SurfaceSection& section);

}  // namespace ZVSmartModel
