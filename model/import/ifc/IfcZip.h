#pragma once

#include <string>

namespace ZVSmartModel {

/// The one IFC file (STEP form) in an archive, from the archive's bytes. What an archive promises
/// is not believed: unpacking stops where more comes than it said, or than a quarter of the
/// machine's memory. Throws ImportError for what holds no such file or several, is damaged or
/// encrypted, or too large.
std::string UnpackedIfc(const std::string& archive);

}  // namespace ZVSmartModel
