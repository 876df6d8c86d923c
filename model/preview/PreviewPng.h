#pragma once

#include <cstdio>
#include <string>

#include "ZVSmartZvg/Geo.h"

namespace ZVSmartModel {

/// Decodes a PNG file, from where `file` stands, into rows of red, green, blue and alpha, top row
/// first. Throws Error InputOutput, which names it `path`, where it cannot be read, is damaged,
/// or is larger than 64 MiB decoded.
ZVSmartZvg::SZVLGZvgGeoImage ReadPng(std::FILE* file, const std::string& path);

}  // namespace ZVSmartModel
