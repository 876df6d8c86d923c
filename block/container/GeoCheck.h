#pragma once

#include <string>

#include "ZVSmartZvg/Geo.h"

namespace ZVSmartZvg {

/// What cannot be in a geometry that reads well, nested ones included: faces that name points
/// which are not there, images whose size is not that of their pixels. Empty where nothing is.
/// The lists of a render mesh are the host's own and not checked.
std::string FaultOf(const SZVLGZvgGeo& geo);

}  // namespace ZVSmartZvg
