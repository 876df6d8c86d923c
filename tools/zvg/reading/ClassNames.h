#pragma once

#include <string>

#include "ZVSmartZvg/Comp.h"

/// Whether the component has a class of this name, on any level.
bool IsOfClass(const ZVSmartZvg::SZVLGZvgComp& comp, const std::wstring& name);

/// Whether components of this name on level 2 are rooms: space between what is built, whose bodies
/// would hide it.
bool IsRoomClass(const std::wstring& classLevel2Name);
