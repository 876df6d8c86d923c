#pragma once

#include "ZVSmartZvg/Comp.h"
#include "component/FloorTables.h"

namespace ZVSmartZvg {

/// Throws "encode error" where no reader would take the component unless a host allows it more
/// memory than by default: its own part and its rows in `floors`, or what it brings to a class
/// table. Its geometries are not looked at.
void CheckComponentMemory(const SZVLGZvgComp& comp, const FloorTables& floors,
                          unsigned int version);

}  // namespace ZVSmartZvg
