#pragma once

#include "ZVSmartModel/Error.h"

namespace ZVSmartModel::Tool {

/// What the user may say about every command.
struct CommonOptions {
    bool quiet = false;        ///< nothing but errors on standard error
    bool json = false;         ///< inspecting commands print JSON instead of text
    bool differs = false;      ///< set by a command that found what it compares to differ
    bool noLimit = false;      ///< reading commands take what work and memory a file asks for
    unsigned int threads = 0;  ///< that work at once; 0 for as many as there are processors
};

}  // namespace ZVSmartModel::Tool
