#pragma once

#include <cstdint>

#include "ZVSmartZvg/Comp.h"
#include "ZVSmartZvg/Geo.h"

namespace ZVSmartModel {

// About how many bytes of memory a record takes. A file may name its parts over and over, so that
// a record is far larger than the bytes that it was read from.

std::uint64_t BytesOf(const ZVSmartZvg::SZVLGZvgComp& comp);

/// What its texts and properties take.
std::uint64_t BytesOf(const ZVSmartZvg::SZVLGZvgDisplayAttr& attr);

/// With all that is nested in it.
std::uint64_t BytesOf(const ZVSmartZvg::SZVLGZvgGeo& geo);

/// Without what is nested in it.
std::uint64_t OwnBytesOf(const ZVSmartZvg::SZVLGZvgGeo& geo);

}  // namespace ZVSmartModel
