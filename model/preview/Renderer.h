#pragma once

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <vector>

#include "ZVSmartModel/Values.h"
#include "model/scene/Scene.h"

namespace ZVSmartModel {

/// Whether this build can draw, and the ray tracer that it needs for it is there. Throws
/// std::bad_alloc where memory does not suffice to load it.
bool CanRender();

/// Draws a three-quarter view of the whole scene on a transparent ground: ambient light that is
/// weaker where surroundings hide the sky (ambient occlusion), a key light with soft shadows, and
/// lines where surfaces or components end. Nothing is random: the same scene and size give the
/// same bytes. Width and height are 1 to 8192. A scene without anything to show gives an empty
/// picture, 0 × 0. Throws RenderFailed where the ray tracer does.
///
/// So many threads draw, this one among them; 0 takes all processors. `tell`, if given, is called
/// often by the calling thread with how much is drawn, 0 to 1. What it throws ends the drawing and
/// passes through.
///
/// Rays that meet many surfaces at once take long. Unless `patient`, Render throws RenderTooLong
/// once its threads have taken about ten times the processor time that buildings of this size take:
/// a second and 30 microseconds for each pixel, and as much again for every 2 MiB of surfaces.
Picture Render(const Scene& scene, unsigned int width, unsigned int height, bool patient,
               const std::function<void(double drawn)>& tell = {}, unsigned int threads = 0);

/// The ray tracer failed, or is not there.
class RenderFailed : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

class RenderTooLong : public std::runtime_error {
  public:
    RenderTooLong() : std::runtime_error("drawing it takes too long") {}
};

}  // namespace ZVSmartModel
