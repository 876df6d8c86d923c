#pragma once

#include <cstddef>

// Every allocation of the process, the shared library's and the coder's included, passes through
// these hooks: the program defines malloc, and the dynamic linker finds that one first. Not under
// sanitizers, which want malloc for themselves: there `available` is false and nothing fails.

namespace AllocHooks {

extern const bool available;

/// Lets the n-th allocation from now on fail (0 is the next), once or together with all after it.
void FailAt(long n, bool forGood);
/// Ends the failing; true where an allocation was asked for and did fail.
bool Stop();

std::size_t BytesInUse();
/// The most bytes in use since the last `ResetPeak`.
std::size_t PeakBytes();
void ResetPeak();

}  // namespace AllocHooks
