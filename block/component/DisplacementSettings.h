#pragma once

#include <string>

#include "ZVSmartFormat/IniFile.h"
#include "ZVSmartZvg/DisplayAttr.h"

namespace ZVSmartZvg {

/// Gives `attr` the z-buffer size that the settings hold for `className` in their section
/// "ZBufferSize", unless `attr` has one of its own. Values follow `wcstoul` in base 10 and must
/// be read whole; any other is ignored.
void ApplyDisplacement(const ZVSmartFormat::CZVFTIniFile& settings, const std::wstring& className,
                       SZVLGZvgDisplayAttr& attr);

}  // namespace ZVSmartZvg
