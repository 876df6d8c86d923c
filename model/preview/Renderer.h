#pragma once

#include <cstdint>
#include <stdexcept>
#include <vector>

#include "ZVSmartModel/Values.h"
#include "model/scene/Scene.h"

namespace ZVSmartModel {

/// Whether this build can draw; it needs a ray tracer.
bool CanRender();

/// Draws a three-quarter view of the whole scene on a transparent ground: ambient light that is
/// weaker where surroundings hide the sky (ambient occlusion), a key light with soft shadows, and
/// lines where surfaces or components end. Nothing is random: the same scene and size give the
/// same bytes. Width and height are 1 to 8192. A scene without anything to show gives an empty
/// picture, 0 × 0. Throws std::runtime_error where the ray tracer fails.
///
/// Rays that meet many surfaces at once take long. Unless `patient`, Render throws RenderTooLong
/// once its threads have taken about ten times the processor time that buildings of this size take:
/// a second and 30 microseconds for each pixel, and as much again for every 2 MiB of surfaces.
Picture Render(const Scene& scene, unsigned int width, unsigned int height, bool patient);

class RenderTooLong : public std::runtime_error {
  public:
    RenderTooLong() : std::runtime_error("drawing it takes too long") {}
};

}  // namespace ZVSmartModel
