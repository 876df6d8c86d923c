#pragma once

#include <string>

#include "ZVSmartZvg/Geo.h"

/// Decodes a PNG file into rows of red, green, blue and alpha, top row first. Throws ToolError
/// InputOutput where it cannot be read, is damaged, or is larger than 64 MiB decoded.
ZVSmartZvg::SZVLGZvgGeoImage ReadPng(const char* path);

/// Encodes rows of red, green, blue and alpha, `PixelBytes()` of them, as a PNG file. Throws
/// ToolError Usage where this build writes no PNG, Internal where it fails.
std::string EncodePng(const ZVSmartZvg::SZVLGZvgGeoImage& image);
