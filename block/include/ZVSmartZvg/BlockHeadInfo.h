#pragma once

#include <cstdint>
#include <string>

#include "ZVIM/Transf.h"
#include "ZVSmartZvg/Export.h"

namespace ZVSmartZvg {

using ZVIM::GeometryPrimitiveResource::CZVIMTransf;

/// What a block file says about itself. The texts and the value mean what the host wants.
struct SZVLGZvgBlockHeadInfo {
    std::wstring firstText;           ///< the host's own
    std::wstring secondText;          ///< the host's own
    std::int32_t optionalValue = -1;  ///< stored unless −1
    std::wstring optionalText;        ///< stored unless empty
    CZVIMTransf transf;               ///< stored unless the identity
    /// The low five bits are the host's and are stored as they are; the others are computed when
    /// a file is written, and read as they stand in the file.
    std::uint8_t flags = 0;
};

}  // namespace ZVSmartZvg
