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
/// In how many shares the sky is divided for each direction of the picture.
constexpr unsigned int skySharesAcross = 5;
constexpr unsigned int skyShares = skySharesAcross * skySharesAcross;

/// What shines on a point, and what of it comes back. Colours are linear.
class Shading {
  public:
    /// All are borrowed.
    Shading(const Scene& scene, const RayScene& rays, const Camera& camera);

    static constexpr unsigned int skyDirections = 2;  // per share

    /// Looks from a point of a surface into a share of the sky: each share has other directions,
    /// and together they cover the sky.
    std::array<Ray, skyDirections> TowardSky(Vec point, Vec normal, unsigned int share) const;

    /// What comes to the surface from one of these directions, 0 to 1.
    float SkyLight(Vec direction, bool isHidden) const;

    /// Looks from a point of a surface to a share of the sun, which has `samplesPerPixel` of them.
    Ray TowardSun(Vec point, Vec normal, unsigned int share) const;

    /// What comes to the surface from there, where nothing hides it; 0 where it is turned away.
    float SunLight(Vec direction, Vec normal) const;

    /// What comes to the surface from the whole sun.
    float SunLight(Vec normal) const { return SunLight(toSun, normal); }

    /// The light that comes from an opaque surface; of the sky the share that nothing hides.
    Vec Light(const SurfacePoint& surface, float openSky, float sun) const;

    /// The light that comes from a transparent surface itself.
    Vec GlassLight(const SurfacePoint& surface) const;

    /// How much of what is behind a transparent surface it hides, 0 to 1.
    float GlassShare(const SurfacePoint& surface) const;

  private:
    const RayScene& rays;
    std::vector<Vec> colours;  ///< by look, linear
    std::vector<float> shares;
    Vec toSun;
    std::array<Vec, samplesPerPixel> sunDirections;
    float reach = 0.3F;  ///< how far surroundings matter
    float farAway = 3;
    /// On the hemisphere around +Z.
    std::array<std::array<Vec, skyDirections>, skyShares> skyPattern;
};

/// A linear colour value, 0 to 1, as it is stored in a byte; the sRGB curve.
float Encoded(float linear);

}  // namespace ZVSmartModel
