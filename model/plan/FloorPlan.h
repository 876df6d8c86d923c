#pragma once

#include <functional>
#include <utility>

#include "model/element/OpenedBlock.h"
#include "model/plan/Drawing.h"
#include "model/plan/PlacedRecords.h"

namespace ZVSmartModel {

/// What plans say of their progress: the floor whose components are being read, and how many
/// floors there are. Called often; may throw.
using PlanStep = std::function<void(unsigned int done, unsigned int total)>;

/// What DrawFloors is asked for; see PlanOptions.
struct WantedPlans {
    std::pair<unsigned int, unsigned int> floors;  ///< the first, and the one behind the last
    double cutHeight, depth;
    bool roof, zones;
};

/// Draws floors, each with what became of its components; WritePlan says what is drawn and how. It
/// takes one pass over the components of all floors, for a body may reach through the planes of
/// several. Components that cannot be read are remembered by `block`, geometries by `records`.
/// Throws Error Damaged where one floor has more corners than any drawing.
PlanDrawing DrawFloors(OpenedBlock& block, PlacedRecords& records, const WantedPlans& wanted,
                       const PlanStep& step);

}  // namespace ZVSmartModel
