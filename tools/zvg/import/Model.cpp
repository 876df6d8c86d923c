#include "tools/zvg/import/Model.h"

#include <algorithm>
#include <cmath>

namespace {

std::uint8_t ByteOf(double part) {
    return static_cast<std::uint8_t>(std::lround(std::clamp(part, 0.0, 1.0) * 255));
}

}  // namespace

Colour MakeColour(double red, double green, double blue, double alpha) {
    return {ByteOf(red), ByteOf(green), ByteOf(blue), ByteOf(alpha)};
}

Placement WithoutNoise(const Placement& placement) {
    Placement result = placement;
    for (double& value : result) {
        if (std::abs(value) < 1e-12) value = 0;
    }
    return result;
}
