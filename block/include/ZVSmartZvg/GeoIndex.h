#pragma once

#include "ZVSmartFormat/Stream.h"

namespace ZVSmartZvg {

using ZVSmartFormat::u16;
using ZVSmartFormat::u32;
using ZVSmartFormat::u64;
using ZVSmartFormat::u8;

/// Where a geometry is stored. 0xFFFFFFFF in either field: nowhere.
struct SZVLGZvgGeoIndex {
    u32 blockIndex = 0xFFFFFFFF;    ///< geometry block, counted from 0
    u32 indexInBlock = 0xFFFFFFFF;  ///< record within that block, counted from 0
};

}  // namespace ZVSmartZvg
