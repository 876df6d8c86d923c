#pragma once

#include <array>
#include <vector>

#include "model/scene/Scene.h"

namespace ZVSmartModel {

/// What a picture of a scene must show.
struct Framing {
    SceneBox box;                                ///< empty where there is nothing to show
    std::vector<std::array<double, 3>> outline;  ///< corners of boxes around what is placed
};

/// Finds what belongs together: the largest thing, and whatever is not farther from what was found
/// than that is large. The rest counts as well unless all of it is small: a mark that was left at
/// the grid's origin must not turn the building into a dot.
Framing FramingOf(const Scene& scene);

}  // namespace ZVSmartModel
