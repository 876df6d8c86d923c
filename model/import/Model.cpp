#include "model/import/Model.h"

#include <algorithm>
#include <cmath>

namespace ZVSmartModel {

namespace {

std::uint8_t ByteOf(double part) {
    return static_cast<std::uint8_t>(std::lround(std::clamp(part, 0.0, 1.0) * 255));
}

}  // namespace

Rgba MakeColour(double red, double green, double blue, double alpha) {
    return {ByteOf(red), ByteOf(green), ByteOf(blue), ByteOf(alpha)};
}

Transform WithoutNoise(const Transform& placement) {
    Transform result = placement;
    for (double& value : result) {
        if (std::abs(value) < 1e-12) value = 0;
    }
    return result;
}

Transform Combined(const Transform& a, const Transform& b) {
    Transform result;
    for (std::size_t row = 0; row < 12; row += 4) {
        for (std::size_t column = 0; column < 4; ++column) {
            result[row + column] = a[row] * b[column] + a[row + 1] * b[column + 4] +
                                   a[row + 2] * b[column + 8] + (column == 3 ? a[row + 3] : 0);
        }
    }
    return result;
}

StoredProperty ThicknessProperty(double metres) {
    return {L"LayerThickness", NumberText(metres), L"length", L"m"};
}

}  // namespace ZVSmartModel
