#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <span>

#include "model/preview/Vec.h"
#include "model/scene/Scene.h"

namespace ZVSmartModel {

/// What is looked at: from `origin` along `direction`, between two distances.
struct Ray {
    Vec origin, direction;  ///< the direction is of unit length
    float from = 0;
    float to = std::numeric_limits<float>::infinity();
};

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

    /// The first opaque surface on each ray, whose `to` does not count. Of surfaces that coincide
    /// it is always the same one: that of the component with the lowest number, so that they do not
    /// flicker through each other.
    ///
    /// Here and below there is a result for each ray, and rays that are neighbours in the list are
    /// followed together: the more alike they are, the faster.
    void FirstOpaque(std::span<const Ray> rays, std::span<std::optional<SurfacePoint>> met) const;

    /// The first transparent surface on each ray.
    void FirstTransparent(std::span<const Ray> rays,
                          std::span<std::optional<SurfacePoint>> met) const;

    /// Whether there is anything transparent at all.
    bool HasTransparent() const;

    /// For each ray whether something opaque is on it: 1 or 0.
    void AreBlocked(std::span<const Ray> rays, std::span<std::uint8_t> blocked) const;

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
