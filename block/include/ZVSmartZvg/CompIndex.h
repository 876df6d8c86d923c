#pragma once

#include "ZVSmartFormat/Stream.h"

namespace ZVSmartZvg {

using ZVSmartFormat::u32;

/// Where a component is stored. 0xFFFFFFFF in either field: nowhere.
struct SZVLGCompIndex {
    u32 floorIndex = 0xFFFFFFFF;  ///< floor, counted from 0 in the order the saver met them
    u32 compIndex = 0xFFFFFFFF;   ///< component within that floor, counted from 0
};

}  // namespace ZVSmartZvg
