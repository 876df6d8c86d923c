#pragma once

#include <string>
#include <string_view>

namespace ZVSmartModel {

/// What follows the last dot of a file's name, its ASCII letters small: "glb" of "a/House.GLB".
/// Empty where there is no dot.
std::string ExtensionOf(std::string_view path);

}  // namespace ZVSmartModel
