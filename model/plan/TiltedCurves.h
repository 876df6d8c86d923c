#pragma once

#include "ZVSmartZvg/Geo.h"

namespace ZVSmartModel {

/// Whether the placement keeps what stands upright upright: the height of a point does not change
/// where it lies on the plan.
bool KeepsUpright(const ZVSmartZvg::CZVIMTransf& toModel);

/// The curves of the record itself in the model's coordinates: polylines and segments moved, arcs
/// and circles as short straight pieces, for they need not look round from above.
ZVSmartZvg::SZVLGZvgGeo CurvesInModel(const ZVSmartZvg::SZVLGZvgGeo& record,
                                      const ZVSmartZvg::CZVIMTransf& toModel);

}  // namespace ZVSmartModel
