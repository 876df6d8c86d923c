#pragma once

#include <string>

#include "ZVSmartZvg/Comp.h"

/// Whether the component has a class of this name, on any level.
bool IsOfClass(const ZVSmartZvg::SZVLGZvgComp& comp, const std::wstring& name);
