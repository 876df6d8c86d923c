#pragma once

#include <functional>
#include <string>
#include <vector>

#include "support.h"

// Small block files that ask for much: records that are named over and over, placements and rows
// that multiply, polygons and triangles that cost whoever draws them.

namespace hostile {

struct HostileFile {
    std::string name;
    std::function<support::Bytes()> make;
};

const std::vector<HostileFile>& HostileFiles();

/// The file of that name.
support::Bytes HostileFileNamed(const std::string& name);

}  // namespace hostile
