#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace ZVSmartModel {

/// Red, green and blue as light, 0 to 1, and how much of it covers what is behind.
struct MeanColour {
    std::array<double, 3> light = {1, 1, 1};
    double alpha = 1;
};

/// Light, 0 to 1, of a stored part of a colour (sRGB, IEC 61966-2-1), and back.
/// @{
double LightOf(double stored);
double StoredOf(double light);
/// @}

/// Images with more pixels are not decoded.
constexpr std::uint64_t mostPixels = 64 << 20;

/// The mean of a PNG or JPEG file's pixels, as the eye has it from afar: of their light, each as
/// much as it covers. Nothing where the image is damaged, too large or of another format, or this
/// build does not read it. Takes up to 4 bytes a pixel meanwhile.
std::optional<MeanColour> MeanOfImage(const std::string& bytes);

}  // namespace ZVSmartModel
