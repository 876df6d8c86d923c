#include "model/preview/Looker.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

namespace ZVSmartModel {

namespace {

constexpr int glassLayers = 4;

}  // namespace

bool AreOnOneSurface(const Sample& a, const Sample& b, float width) {
    constexpr float smooth = 0.9986F;  // cosine of 3 degrees
    if (!a.hit || !b.hit || Dot(a.surface.normal, b.surface.normal) < smooth) return false;
    const float offPlane = std::fabs(Dot(b.point - a.point, a.surface.normal));
    return offPlane <= width * a.surface.distance;
}

void Looker::Look(std::span<const Gaze> gazes) {
    std::array<Ray, atOnce> looks;
    std::array<std::optional<SurfacePoint>, atOnce> met;
    for (std::size_t first = 0; first < gazes.size(); first += atOnce) {
        const auto some = gazes.subspan(first, std::min(atOnce, gazes.size() - first));
        for (std::size_t i = 0; i < some.size(); ++i) {
            looks[i] = {camera.Position(), some[i].direction};
        }
        rays.FirstOpaque(std::span(looks).first(some.size()), met);
        for (std::size_t i = 0; i < some.size(); ++i) {
            Sample& sample = *some[i].sample;
            sample = {};
            if (!met[i]) continue;
            sample.hit = true;
            sample.surface = *met[i];
            sample.point = camera.Position() + some[i].direction * met[i]->distance;
        }
        if (rays.HasTransparent()) LookThrough(some);
        tell();
    }
}

/// Lays up together what is transparent before at most `atOnce` samples.
void Looker::LookThrough(std::span<const Gaze> gazes) {
    std::array<Ray, atOnce> looks;
    std::array<Sample*, atOnce> samples;
    std::array<std::optional<SurfacePoint>, atOnce> met;
    std::size_t count = 0;
    for (const Gaze& gaze : gazes) {
        if (!gaze.throughGlass) continue;
        const Sample& sample = *gaze.sample;
        const float end = sample.hit ? sample.surface.distance - rays.Skin()
                                     : std::numeric_limits<float>::infinity();
        looks[count] = {camera.Position(), gaze.direction, 0, end};
        samples[count++] = gaze.sample;
    }
    for (int layer = 0; layer < glassLayers && count > 0; ++layer) {
        rays.FirstTransparent(std::span(looks).first(count), met);
        std::size_t left = 0;
        for (std::size_t i = 0; i < count; ++i) {
            if (!met[i]) continue;
            Sample& sample = *samples[i];
            const float hides = shading.GlassShare(*met[i]);
            sample.glass = sample.glass + shading.GlassLight(*met[i]) * (sample.behind * hides);
            sample.behind *= 1 - hides;
            looks[i].from = met[i]->distance + rays.Skin();
            if (looks[i].from >= looks[i].to) continue;
            looks[left] = looks[i];
            samples[left++] = samples[i];
        }
        count = left;
        tell();
    }
}

void Looker::LightBySky(std::span<const Lighting> wanted) {
    constexpr std::size_t most = 32;
    constexpr std::size_t directions = Shading::skyDirections;
    // Those of one direction beside each other: they are nearly parallel.
    std::array<Ray, most * directions> looks;
    std::array<std::uint8_t, most * directions> hidden;
    for (std::size_t first = 0; first < wanted.size(); first += most) {
        const auto some = wanted.subspan(first, std::min(most, wanted.size() - first));
        for (std::size_t i = 0; i < some.size(); ++i) {
            const Sample& sample = *some[i].sample;
            const auto toward =
                shading.TowardSky(sample.point, sample.surface.normal, some[i].share);
            for (std::size_t k = 0; k < directions; ++k) looks[k * some.size() + i] = toward[k];
        }
        rays.AreBlocked(std::span(looks).first(directions * some.size()), hidden);
        for (std::size_t i = 0; i < some.size(); ++i) {
            float comes = 0, could = 0;
            for (std::size_t k = 0; k < directions; ++k) {
                const std::size_t at = k * some.size() + i;
                comes += shading.SkyLight(looks[at].direction, hidden[at] != 0);
                could += shading.SkyLight(looks[at].direction, false);
            }
            some[i].sample->openSky = comes / could;
        }
        tell();
    }
}

void Looker::LightBySun(std::span<const Lighting> wanted) {
    std::array<Ray, atOnce> looks;
    std::array<Sample*, atOnce> samples;
    std::array<std::uint8_t, atOnce> hidden;
    std::size_t count = 0;
    const auto follow = [&] {
        rays.AreBlocked(std::span(looks).first(count), hidden);
        for (std::size_t i = 0; i < count; ++i) {
            if (hidden[i] != 0) continue;
            samples[i]->isSunny = true;
            samples[i]->sun = shading.SunLight(looks[i].direction, samples[i]->surface.normal);
        }
        count = 0;
        tell();
    };
    for (const Lighting& lighting : wanted) {
        Sample& sample = *lighting.sample;
        sample.isSunny = false;
        sample.sun = 0;
        looks[count] = shading.TowardSun(sample.point, sample.surface.normal, lighting.share);
        if (shading.SunLight(looks[count].direction, sample.surface.normal) <= 0) continue;
        samples[count++] = &sample;
        if (count == atOnce) follow();
    }
    if (count > 0) follow();
}

}  // namespace ZVSmartModel
