#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace ZVSmartModel {

/// A colour. `alpha` 255 is opaque, 0 is not seen.
struct Rgba {
    /// 0 to 255.
    /// @{
    std::uint8_t red = 0, green = 0, blue = 0;
    /// @}
    /// 255 is opaque.
    std::uint8_t alpha = 0xFF;

    /// Whether all four parts are the same.
    /// @{
    friend bool operator==(const Rgba& a, const Rgba& b) {
        return a.red == b.red && a.green == b.green && a.blue == b.blue && a.alpha == b.alpha;
    }
    friend bool operator!=(const Rgba& a, const Rgba& b) { return !(a == b); }
    /// @}
    /// By red, green, blue, then alpha.
    friend bool operator<(const Rgba& a, const Rgba& b) { return a.Number() < b.Number(); }

  private:
    constexpr std::uint32_t Number() const {
        return std::uint32_t{red} << 24 | std::uint32_t{green} << 16 | std::uint32_t{blue} << 8 |
               alpha;
    }
};

/// X, Y and Z; metres for points. Z is up.
using Point = std::array<double, 3>;

/// Local coordinates to others: three rows of (X axis, Y axis, Z axis, origin), so that a point p
/// comes to lie at t[0]*p.x + t[1]*p.y + t[2]*p.z + t[3], and so on.
using Transform = std::array<double, 12>;

constexpr Transform identityTransform = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};

/// A box along the axes, in metres. One around nothing has `low` above `high`.
struct Box {
    /// The least coordinates.
    Point low = {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity(),
                 std::numeric_limits<double>::infinity()};
    /// The greatest coordinates.
    Point high = {-std::numeric_limits<double>::infinity(),
                  -std::numeric_limits<double>::infinity(),
                  -std::numeric_limits<double>::infinity()};

    /// Whether nothing is in it.
    bool IsEmpty() const { return !(low[0] <= high[0]); }
};

/// A picture: rows of red, green, blue and alpha, 4 bytes a pixel, top row first. Alpha is not
/// multiplied in. A picture without pixels is 0 × 0.
struct Picture {
    /// Pixels.
    /// @{
    unsigned int width = 0, height = 0;
    /// @}
    /// Four bytes a pixel.
    std::vector<std::uint8_t> pixels;
};

/// Told the work under way and how much of it is done, 0 to 1, or below 0 where nobody knows. It
/// answers whether to go on: false ends the call with Error, Status::Cancelled. It is called by the
/// thread that made the call, a few times a second, and may not ask the file that the call is
/// about.
using Progress = std::function<bool(const std::string& work, double fraction)>;

}  // namespace ZVSmartModel
