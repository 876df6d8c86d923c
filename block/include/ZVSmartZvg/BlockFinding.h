#pragma once

#include <string>

namespace ZVSmartZvg {

/// One thing that is wrong with a file.
struct SZVLGBlockFinding {
    unsigned long long position = 0;  ///< bytes from the file's base
    std::string reason;               ///< one line of English text
};

}  // namespace ZVSmartZvg
