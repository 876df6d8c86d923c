#pragma once

#include <algorithm>
#include <cmath>

namespace ZVSmartModel {

/// Three numbers: a point, a direction or a colour.
struct Vec {
    float x = 0, y = 0, z = 0;

    friend Vec operator+(Vec a, Vec b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
    friend Vec operator-(Vec a, Vec b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
    friend Vec operator*(Vec a, float s) { return {a.x * s, a.y * s, a.z * s}; }
    friend Vec operator-(Vec a) { return {-a.x, -a.y, -a.z}; }
};

inline float Dot(Vec a, Vec b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

inline Vec Cross(Vec a, Vec b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// Zero stays zero, and lengths whose square no float can hold do no harm.
inline Vec Unit(Vec a) {
    const float largest = std::max({std::fabs(a.x), std::fabs(a.y), std::fabs(a.z)});
    if (!(largest > 0)) return {};
    const Vec scaled = {a.x / largest, a.y / largest, a.z / largest};
    return scaled * (1 / std::sqrt(Dot(scaled, scaled)));
}

inline Vec Mix(Vec a, Vec b, float share) {
    return a * (1 - share) + b * share;
}

/// Two directions that stand on the unit vector `normal` and on each other (Duff et al. 2017).
struct Frame {
    explicit Frame(Vec normal) {
        const float sign = std::copysign(1.0F, normal.z);
        const float a = -1 / (sign + normal.z);
        const float b = normal.x * normal.y * a;
        u = {1 + sign * normal.x * normal.x * a, sign * b, -sign * normal.x};
        v = {b, sign + normal.y * normal.y * a, -normal.y};
    }

    Vec u, v;
};

}  // namespace ZVSmartModel
