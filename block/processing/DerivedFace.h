#pragma once

#include "ZVSmartZvg/ParamFace.h"

namespace ZVSmartZvg {

/// What a parametric face comes down to: its shape in a frame of its own, with what else tells it
/// from others, and where that frame stands.
template <class Key>
struct DerivedFace {
    Key key;                ///< holds the shape as `localShell`
    CZVIMTransf transform;  ///< from the local frame to the world
};

}  // namespace ZVSmartZvg
