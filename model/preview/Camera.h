#pragma once

#include <array>
#include <vector>

#include "model/preview/Framing.h"
#include "model/preview/Vec.h"
#include "model/scene/Scene.h"

namespace ZVSmartModel {

/// Looks at a model from above, over the corner between its front (the long side that faces
/// -Y or +X) and the side beside it. Coordinates are the model's minus `Center`, divided by
/// `Radius`: whatever the model's size, what is framed lies in the unit sphere.
class Camera {
  public:
    /// Chooses direction and distance so that what is framed, which is something, fills the
    /// picture up to a margin.
    Camera(const Framing& framing, unsigned int width, unsigned int height);

    const std::array<double, 3>& Center() const { return center; }
    Vec Position() const { return position; }
    /// Toward what is seen at a place in the picture: pixels from the left and from the top.
    Vec Direction(float column, float row) const;
    /// The width of a pixel at distance 1.
    float PixelSize() const { return pixelSize; }
    /// Level, to the side of the picture on which the model's front is.
    Vec FrontSide() const { return frontOnRight ? right : -right; }
    /// From the camera into the picture.
    Vec Forward() const { return forward; }
    /// Half the diagonal of the framed box.
    double Radius() const { return radius; }

  private:
    void Turn(const SceneBox& box);
    void Fit(const std::vector<Vec>& points, float tanX, float tanY);

    std::array<double, 3> center;
    double radius;
    Vec right, up, forward;
    Vec position;
    float pixelSize;
    float halfWidth, halfHeight;
    bool frontOnRight = false;
};

}  // namespace ZVSmartModel
