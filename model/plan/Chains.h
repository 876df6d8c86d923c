#pragma once

#include <vector>

#include "model/plan/MeshSection.h"

namespace ZVSmartModel {

/// Joins pieces end to end into long paths; one that comes back to its beginning is closed. Each
/// piece is in one path. Corners at which a path runs straight on are left out. Takes time that
/// grows like n log n.
std::vector<PlanPath> ChainPieces(const SurfaceSection& pieces);

/// The same for pieces that run from `from` to `to` and are followed that way only. Where as many
/// end in each point as begin there, all paths are closed.
std::vector<PlanPath> ChainDirected(const SurfaceSection& pieces);

/// Takes out what runs there and back: of pieces between the same points those that remain all run
/// one way. What triangles that turn one way wind around stays the same.
SurfaceSection CancelOpposites(SurfaceSection pieces);

/// Takes out corners where a closed path runs straight on: triangles leave one on each diagonal.
void DropStraightCorners(PlanPath& path);

/// A point of a section, in metres.
PlanPoint InMetres(const SectionPoint& point);

}  // namespace ZVSmartModel
