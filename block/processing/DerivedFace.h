#pragma once

#include "ZVSmartZvg/ParamFace.h"

namespace ZVSmartZvg {

/// What a parametric face comes down to: what tells its shape from others, the shape in a frame
/// of its own, and where that frame stands.
template <class Key>
struct DerivedFace {
    Key key;
    CZVIMShell localShell;
    CZVIMTransf transform;  ///< from the local frame to the world
};

}  // namespace ZVSmartZvg
