#pragma once

#include <string>
#include <string_view>

#include "ZVSmartZvg/Comp.h"

// What the records' names say.

namespace ZVSmartModel {

/// The GUID as 8-4-4-4-12 upper-case hexadecimal digits.
std::string GuidText(const ZVSmartZvg::SerialGuid& guid);

/// The name of a GUID name, or its GUID in braces where the name is empty; UTF-8.
std::string KeyText(const ZVSmartZvg::SerialKey& key);

/// Whether the component has a class of this name, on any level.
bool IsOfClass(const ZVSmartZvg::SZVLGZvgComp& comp, const std::wstring& name);

/// The floor of what belongs to no storey, in files that this library wrote.
inline const std::wstring unassignedFloorName = L"unassigned";

/// Whether components of this name on level 2 are rooms: space between what is built, whose bodies
/// would hide it.
/// @{
bool IsRoomClass(const std::wstring& classLevel2Name);
bool IsRoomClass(std::string_view className);
/// @}

}  // namespace ZVSmartModel
