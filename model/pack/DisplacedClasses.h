#pragma once

#include <cstddef>

namespace ZVSmartModel {

/// The number of level-4 classes that have a z-buffer size in the block file that `descriptor`
/// is: those that displacement settings have set, as packing sets none by itself.
std::size_t CountDisplacedClasses(int descriptor);

}  // namespace ZVSmartModel
