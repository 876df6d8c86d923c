#pragma once

#include <array>
#include <functional>
#include <span>
#include <vector>

#include "model/preview/Camera.h"
#include "model/preview/RayScene.h"
#include "model/preview/Shading.h"
#include "model/preview/Vec.h"

namespace ZVSmartModel {

/// What is seen at one place in the picture, and how much light falls on it.
struct Sample {
    bool hit = false;
    SurfacePoint surface;
    Vec point;
    Vec glass;          ///< the light of what is transparent before it
    float behind = 1;   ///< the share of what is seen through that
    float openSky = 0;  ///< the share of the sky that nothing hides
    float sun = 0;
    bool isSunny = false;
    bool isLit = false;  ///< whether openSky and sun hold for the surface around
};

/// Whether two samples lie on one smooth surface; `width` is what a pixel covers at distance 1.
bool AreOnOneSurface(const Sample& a, const Sample& b, float width);

/// A sample that is to be filled, and where it is.
struct Gaze {
    Sample* sample;
    Vec direction;
    bool throughGlass;  ///< whether there may be something transparent
};

/// A sample that light is to fall on, from one of the shares that sky and sun are divided in.
struct Lighting {
    Sample* sample;
    unsigned int share;
};

/// Follows many rays at once, and tells often that it goes on.
class Looker {
  public:
    /// All are borrowed. `tell` is called after about a hundred rays; what it throws passes
    /// through.
    Looker(const Camera& camera, const RayScene& rays, const Shading& shading,
           const std::function<void()>& tell)
        : camera(camera), rays(rays), shading(shading), tell(tell) {}

    /// Finds what is seen.
    void Look(std::span<const Gaze> gazes);

    /// Lets a share of the sky shine on samples, all of which are hit.
    void LightBySky(std::span<const Lighting> wanted);

    /// Lets a share of the sun shine on samples, all of which are hit.
    void LightBySun(std::span<const Lighting> wanted);

  private:
    static constexpr std::size_t atOnce = 64;

    void LookThrough(std::span<const Gaze> gazes);

    const Camera& camera;
    const RayScene& rays;
    const Shading& shading;
    const std::function<void()>& tell;
};

}  // namespace ZVSmartModel
