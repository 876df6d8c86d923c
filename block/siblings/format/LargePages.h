#pragma once

#include <cstddef>

namespace ZVSmartLzma {

/// Asks the system to hold these bytes in large pages as they are written first, where it has such
/// pages and the bytes fill one. That saves most of the faults of fresh memory and, where it is
/// read here and there, of the look-ups of its pages. Contents and ownership stay as they are.
void PreferLargePages(void* memory, std::size_t byteCount);

}  // namespace ZVSmartLzma
