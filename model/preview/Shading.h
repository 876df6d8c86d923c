#pragma once

#include <array>

#include "model/preview/Camera.h"
#include "model/preview/RayScene.h"
#include "model/preview/Vec.h"
#include "model/scene/Scene.h"

namespace ZVSmartModel {

/// How many samples a pixel has in each direction.
constexpr unsigned int samplesAcross = 3;
constexpr unsigned int samplesPerPixel = samplesAcross * samplesAcross;

/// What shines on a point, and what of it comes back. Colours are linear.
class Shading {
  public:
    /// All are borrowed.
    Shading(const Scene& scene, const RayScene& rays, const Camera& camera);

    /// The light that comes from an opaque surface. `sample` is the sample's number within its
    /// pixel: each has other directions, and together they cover the sky.
    Vec Light(const SurfacePoint& surface, Vec point, unsigned int sample) const;

    /// The light that comes from a transparent surface itself.
    Vec GlassLight(const SurfacePoint& surface) const;

    /// How much of what is behind a transparent surface it hides, 0 to 1.
    float GlassShare(const SurfacePoint& surface) const;

  private:
    static constexpr unsigned int skyDirections = 6;  // per sample

    float Sky(Vec point, Vec normal, unsigned int sample) const;
    float Sun(Vec point, Vec normal, unsigned int sample) const;

    const RayScene& rays;
    std::vector<Vec> colours;  ///< by look, linear
    std::vector<float> shares;
    Vec toSun;
    float reach = 0.3F;  ///< how far surroundings matter
    float farAway = 3;
    /// On the unit disk, for each sample of a pixel.
    std::array<std::array<Vec, skyDirections>, samplesPerPixel> skyPattern;
};

/// A linear colour value, 0 to 1, as it is stored in a byte; the sRGB curve.
float Encoded(float linear);

}  // namespace ZVSmartModel
