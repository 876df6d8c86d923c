#pragma once

#include <array>
#include <vector>

#include "tools/zvg/preview/Vec.h"
#include "tools/zvg/scene/Scene.h"

/// Looks at a model from above, over the corner between its front (the long side that faces
/// -Y or +X) and its right side. Coordinates are the model's minus `Center`.
class Camera {
  public:
    /// Chooses direction and distance so that `box`, which is not empty, and the placed meshes in
    /// it fill the picture up to a margin.
    Camera(const Scene& scene, const SceneBox& box, unsigned int width, unsigned int height);

    const std::array<double, 3>& Center() const { return center; }
    Vec Position() const { return position; }
    /// Toward what is seen at a place in the picture: pixels from the left and from the top.
    Vec Direction(float column, float row) const;
    /// The width of a pixel at distance 1.
    float PixelSize() const { return pixelSize; }
    /// From the model to the left of the camera, level.
    Vec Left() const { return -right; }
    /// From the camera into the picture.
    Vec Forward() const { return forward; }
    /// Half the diagonal of the model's box.
    float Radius() const { return radius; }

  private:
    void Turn(const SceneBox& box);
    void Fit(const std::vector<Vec>& points, float tanX, float tanY);

    std::array<double, 3> center;
    float radius;
    Vec right, up, forward;
    Vec position;
    float pixelSize;
    float halfWidth, halfHeight;
};
