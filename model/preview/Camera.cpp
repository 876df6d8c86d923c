#include "model/preview/Camera.h"

#include <limits>
#include <numbers>

namespace ZVSmartModel {

namespace {

constexpr float margin = 0.04F;           // of the picture's width, on each side
constexpr float halfFieldOfView = 0.22F;  // tangent, along the shorter side: about 25 degrees
constexpr float elevation = 0.46F;        // radians: about 26 degrees above the horizon
constexpr double smallest = 1e-6;         // in the model's unit; below it is nothing to see
constexpr float aside = 0.62F;            // radians off the view at right angles to the front

Vec Relative(const std::array<double, 3>& point, const std::array<double, 3>& center,
             double radius) {
    return {static_cast<float>((point[0] - center[0]) / radius),
            static_cast<float>((point[1] - center[1]) / radius),
            static_cast<float>((point[2] - center[2]) / radius)};
}

}  // namespace

Camera::Camera(const Framing& framing, unsigned int width, unsigned int height)
    : halfWidth(static_cast<float>(width) / 2), halfHeight(static_cast<float>(height) / 2) {
    const SceneBox& box = framing.box;
    double squares = 0;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        center[axis] = (box.low[axis] + box.high[axis]) / 2;
        const double extent = box.high[axis] - box.low[axis];
        squares += extent * extent / 4;
    }
    radius = std::max(std::sqrt(squares), smallest);
    pixelSize = halfFieldOfView / std::min(halfWidth, halfHeight);
    Turn(box);
    const float inner = 1 - 2 * margin;
    std::vector<Vec> points;
    points.reserve(framing.outline.size());
    for (const auto& point : framing.outline) points.push_back(Relative(point, center, radius));
    Fit(points, pixelSize * halfWidth * inner, pixelSize * halfHeight * inner);
}

void Camera::Turn(const SceneBox& box) {
    frontOnRight = box.high[0] - box.low[0] < box.high[1] - box.low[1];
    const float toFront = frontOnRight ? 0.0F : -std::numbers::pi_v<float> / 2;
    const float angle = frontOnRight ? toFront - aside : toFront + aside;
    const Vec toCamera = {std::cos(angle) * std::cos(elevation),
                          std::sin(angle) * std::cos(elevation), std::sin(elevation)};
    forward = -toCamera;
    right = Unit(Cross(forward, {0, 0, 1}));
    up = Cross(right, forward);
}

// A point at (x, y, z) along right, up and forward is inside the picture of a camera at
// (cx, cy, -d) where |x - cx| <= tanX * (z + d), and so for y. The extremes of x - tanX * z and
// x + tanX * z therefore give the smallest d and the cx that goes with it.
void Camera::Fit(const std::vector<Vec>& points, float tanX, float tanY) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    float leftmost = infinity, rightmost = -infinity, lowest = infinity, highest = -infinity;
    float nearest = infinity;
    for (const Vec point : points) {
        const float x = Dot(point, right), y = Dot(point, up), z = Dot(point, forward);
        rightmost = std::max(rightmost, x - tanX * z);
        leftmost = std::min(leftmost, x + tanX * z);
        highest = std::max(highest, y - tanY * z);
        lowest = std::min(lowest, y + tanY * z);
        nearest = std::min(nearest, z);
    }
    float distance = std::max((rightmost - leftmost) / (2 * tanX), (highest - lowest) / (2 * tanY));
    distance = std::max(distance, 1e-3F - nearest);
    position =
        right * ((leftmost + rightmost) / 2) + up * ((lowest + highest) / 2) - forward * distance;
}

Vec Camera::Direction(float column, float row) const {
    return Unit(forward + right * ((column - halfWidth) * pixelSize) +
                up * ((halfHeight - row) * pixelSize));
}

}  // namespace ZVSmartModel
