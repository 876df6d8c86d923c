#pragma once

#include <exception>

namespace ZVSmartModel {

/// Whether memory ran out, in `new` or as the block library's exceptions say: that says nothing
/// about a file.
bool IsOutOfMemory(const std::exception& error);

}  // namespace ZVSmartModel
