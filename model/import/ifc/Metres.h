#pragma once

#include <cmath>

namespace ZVSmartModel {

/// A length of the file in metres, to the nanometre, so that the conversion leaves no noise in
/// the last digits and no negative zero.
inline double InMetres(double length, double unitInMetres) {
    return std::round(length * unitInMetres * 1e9) / 1e9 + 0.0;
}

}  // namespace ZVSmartModel
