#pragma once

#include <vector>

#include "model/element/ProgressPace.h"
#include "model/export/ExportModel.h"
#include "model/export/GlbBuffer.h"

namespace ZVSmartModel {

/// The nodes of a GLB file; the first is the root, which turns Z up into Y up.
struct GlbNodes {
    JsonElements nodes;
    bool hasInstances = false;
};

/// A node for each group and component, with their names and extras. What a mesh's coordinates are
/// divided by, `scaleOfMesh`, its nodes undo. With `instances`, components of one group that have
/// one mesh, each placed once and neither sheared nor mirrored, share a node; what places them
/// goes to `buffer`. Throws Cancelled.
GlbNodes NodesOf(const ExportModel& model, const std::vector<double>& scaleOfMesh, bool instances,
                 GlbBuffer& buffer, ProgressPace& pace);

}  // namespace ZVSmartModel
