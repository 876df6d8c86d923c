#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>

#include "model/preview/Vec.h"
#include "model/scene/Scene.h"

namespace ZVSmartModel {

struct SurfacePoint {
    float distance = 0;
    Vec normal;  ///< of unit length, toward the ray's origin
    std::uint32_t component = 0;
    std::uint32_t look = 0;
};

/// A scene made ready for rays, its coordinates relative to a center and divided by a radius. What
/// is transparent is kept apart: it neither shades nor hides. Safe to use from several threads at
/// once. The answers do not depend on the number of threads or on the processor's vector units.
class RayScene {
  public:
    RayScene(const Scene& scene, const std::array<double, 3>& center, double radius);

    ~RayScene();
    RayScene(const RayScene&) = delete;
    RayScene& operator=(const RayScene&) = delete;

    /// The first opaque surface on the ray. Of surfaces that coincide it is always the same one:
    /// that of the component with the lowest number, so that they do not flicker through each
    /// other.
    std::optional<SurfacePoint> FirstOpaque(Vec origin, Vec direction) const;

    /// The first transparent surface between two distances on the ray.
    std::optional<SurfacePoint> FirstTransparent(Vec origin, Vec direction, float from,
                                                 float to) const;

    /// Whether something opaque is on the ray up to `distance`.
    bool IsBlocked(Vec origin, Vec direction, float distance) const;

    /// How far from a surface rays should begin that are not to meet it again.
    float Skin() const { return skin; }

  private:
    class Tree;

    float skin = 2e-5F;
    std::unique_ptr<Tree> opaque, transparent;
};

/// A look is transparent where light goes through it; shown are all whose alpha is not 0.
bool IsTransparent(const Rgba& colour);

}  // namespace ZVSmartModel
