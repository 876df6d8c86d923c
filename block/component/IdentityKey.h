#pragma once

#include <string>

#include "ZVSmartZvg/Comp.h"

// What keys a table, as bytes. A letter in front keeps GUIDs and names apart.

namespace ZVSmartZvg {

/// A name.
std::string IdentityKey(const std::wstring& name);

/// A GUID name: its GUID where that is not all zero, else its name.
std::string IdentityKey(const SerialKey& key);

/// An identification row: its GUID where that is not all zero, else its name and its two texts.
std::string IdentityKey(const SZVLGZvgGeoId& row);

}  // namespace ZVSmartZvg
