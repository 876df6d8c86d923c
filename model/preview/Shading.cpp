#include "model/preview/Shading.h"

#include <numbers>

namespace ZVSmartModel {

namespace {

constexpr float darkest = 0.035F;  // black surfaces must still show their shape
constexpr float ambientShare = 0.68F;
constexpr float sunShare = 0.62F;
constexpr float sunElevation = 0.75F;  // radians
constexpr float sunAside = 0.75F;      // radians from the camera's direction to the model's front
constexpr float sunSize = 0.05F;       // radians, for soft shadows
constexpr float leastGlass = 0.25F;

float Linear(std::uint8_t stored) {
    const float value = static_cast<float>(stored) / 255;
    return value <= 0.04045F ? value / 12.92F : std::pow((value + 0.055F) / 1.055F, 2.4F);
}

float Lifted(std::uint8_t stored) {
    return darkest + (0.9F - darkest) * Linear(stored);
}

/// Digits of `number` in base 2, behind the point (van der Corput).
float Radical(unsigned int number) {
    float value = 0, digit = 0.5F;
    for (; number != 0; number /= 2) {
        if (number % 2 != 0) value += digit;
        digit /= 2;
    }
    return value;
}

/// The n-th of `count` points that cover the unit disk evenly (Hammersley); lifted onto the
/// hemisphere they are distributed as the cosine.
Vec DiskPoint(unsigned int n, unsigned int count) {
    const float radius = std::sqrt((static_cast<float>(n) + 0.5F) / static_cast<float>(count));
    const float angle = 2 * std::numbers::pi_v<float> * Radical(n);
    return {radius * std::cos(angle), radius * std::sin(angle), 0};
}

Vec OnHemisphere(Vec disk) {
    return {disk.x, disk.y, std::sqrt(std::max(0.0F, 1 - disk.x * disk.x - disk.y * disk.y))};
}

/// The sky is brighter than what comes back from the ground.
float Brightness(Vec direction) {
    return 0.72F + 0.28F * direction.z;
}

}  // namespace

Shading::Shading(const Scene& scene, const RayScene& rays, const Camera& camera) : rays(rays) {
    for (const Look& look : scene.looks) {
        const Rgba& c = look.colour;
        colours.push_back({Lifted(c.red), Lifted(c.green), Lifted(c.blue)});
        shares.push_back(std::max(leastGlass, static_cast<float>(c.alpha) / 255));
    }
    const Vec level = Unit({-camera.Forward().x, -camera.Forward().y, 0});
    const Vec aside = level * std::cos(sunAside) + camera.FrontSide() * std::sin(sunAside);
    toSun = aside * std::cos(sunElevation) + Vec{0, 0, std::sin(sunElevation)};
    const Frame frame(toSun);
    for (unsigned int n = 0; n < samplesPerPixel; ++n) {
        const Vec disk = DiskPoint(n, samplesPerPixel) * sunSize;
        sunDirections[n] = Unit(toSun + frame.u * disk.x + frame.v * disk.y);
    }
    // A share takes points that lie far from each other, so that each alone is spread as well.
    constexpr unsigned int count = skyDirections * skyShares;
    for (unsigned int n = 0; n < count; ++n) {
        skyPattern[n % skyShares][n / skyShares] = OnHemisphere(DiskPoint(n, count));
    }
}

std::array<Ray, Shading::skyDirections> Shading::TowardSky(Vec point, Vec normal,
                                                           unsigned int share) const {
    const Frame frame(normal);
    const Vec start = point + normal * rays.Skin();
    std::array<Ray, skyDirections> result;
    for (unsigned int i = 0; i < skyDirections; ++i) {
        const Vec turned = skyPattern[share][i];
        result[i] = {start, frame.u * turned.x + frame.v * turned.y + normal * turned.z, 0, reach};
    }
    return result;
}

float Shading::SkyLight(Vec direction, bool isHidden) const {
    // What hides the sky sends some light back itself.
    return Brightness(direction) * (isHidden ? 0.3F : 1.0F) / skyDirections;
}

Ray Shading::TowardSun(Vec point, Vec normal, unsigned int share) const {
    return {point + normal * rays.Skin(), sunDirections[share], 0, farAway};
}

float Shading::SunLight(Vec direction, Vec normal) const {
    return std::max(0.0F, Dot(direction, normal));
}

Vec Shading::Light(const SurfacePoint& surface, float openSky, float sun) const {
    constexpr float meanHeight = 2.0F / 3;  // of the sky's directions, along the normal
    const float sky = openSky * Brightness(surface.normal * meanHeight);
    return colours[surface.look] * (ambientShare * sky + sunShare * sun);
}

Vec Shading::GlassLight(const SurfacePoint& surface) const {
    return colours[surface.look] * (ambientShare + sunShare / 2);
}

float Shading::GlassShare(const SurfacePoint& surface) const {
    return shares[surface.look];
}

float Encoded(float linear) {
    const float value = std::clamp(linear, 0.0F, 1.0F);
    return value <= 0.0031308F ? value * 12.92F : 1.055F * std::pow(value, 1 / 2.4F) - 0.055F;
}

}  // namespace ZVSmartModel
