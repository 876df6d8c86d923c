#pragma once

#include <optional>

#include "ZVIM/Transf.h"
#include "model/plan/Drawing.h"

namespace ZVSmartModel {

/// A placement as seen from above: what it does to flat paths at height 0.
class PlanPlacement {
  public:
    explicit PlanPlacement(const ZVIM::GeometryPrimitiveResource::CZVIMTransf& toModel);

    /// The path where it lies in the model; arcs are kept where circles stay round, mirrored ones
    /// turn round, and others become short straight pieces. Nothing for a path with a number that
    /// is not finite or beyond 1,000,000 km.
    std::optional<PlanPath> Placed(const PlanPath& path) const;

  private:
    PlanPoint Placed(const PlanPoint& point) const;
    /// 1 where circles stay round, -1 where they are mirrored as well, 0 where they do not.
    int Roundness() const;

    double xx, xy, x0;  ///< x' = xx x + xy y + x0
    double yx, yy, y0;
};

}  // namespace ZVSmartModel
