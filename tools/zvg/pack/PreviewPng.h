#pragma once

#include "ZVSmartZvg/Geo.h"

/// Decodes a PNG file into rows of red, green, blue and alpha, top row first. Throws ToolError
/// InputOutput where it cannot be read, is damaged, or is larger than 64 MiB decoded.
ZVSmartZvg::SZVLGZvgGeoImage ReadPng(const char* path);
