#pragma once

namespace ZVSmartZvg {

/// Writes a small building to memory, reads it back and says whether it came back whole.
bool SelfTest();

}  // namespace ZVSmartZvg
