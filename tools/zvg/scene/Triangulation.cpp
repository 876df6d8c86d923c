#include "tools/zvg/scene/Triangulation.h"

#include <cmath>
#include <numeric>

namespace {

using Triangles = std::vector<std::array<std::size_t, 3>>;
using Polygon = std::vector<std::array<double, 3>>;

constexpr std::size_t mostCorners = 1000;

struct Flat {
    double x, y;
};

std::array<double, 3> NewellNormal(const Polygon& polygon) {
    std::array<double, 3> normal = {};
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const auto& a = polygon[i];
        const auto& b = polygon[(i + 1) % polygon.size()];
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const std::size_t u = (axis + 1) % 3;
            const std::size_t v = (axis + 2) % 3;
            normal[axis] += (a[u] - b[u]) * (a[v] + b[v] - 2 * polygon[0][v]);
        }
    }
    return normal;
}

/// The polygon without the coordinate that says least, counter-clockwise.
std::vector<Flat> Flattened(const Polygon& polygon) {
    const std::array<double, 3> normal = NewellNormal(polygon);
    std::size_t drop = 0;
    for (std::size_t axis = 1; axis < 3; ++axis) {
        if (std::fabs(normal[axis]) > std::fabs(normal[drop])) drop = axis;
    }
    std::size_t u = (drop + 1) % 3;
    std::size_t v = (drop + 2) % 3;
    if (normal[drop] < 0) std::swap(u, v);
    std::vector<Flat> flat;
    flat.reserve(polygon.size());
    for (const auto& point : polygon) flat.push_back({point[u], point[v]});
    return flat;
}

/// Twice the area of a triangle, positive where it turns left.
double Turn(const Flat& a, const Flat& b, const Flat& c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

bool Covers(const Flat& a, const Flat& b, const Flat& c, const Flat& point) {
    return Turn(a, b, point) >= 0 && Turn(b, c, point) >= 0 && Turn(c, a, point) >= 0;
}

bool Same(const Flat& a, const Flat& b) {
    return a.x == b.x && a.y == b.y;
}

bool IsEar(const std::vector<Flat>& flat, const std::vector<std::size_t>& left, std::size_t at) {
    const std::size_t count = left.size();
    const Flat& a = flat[left[(at + count - 1) % count]];
    const Flat& b = flat[left[at]];
    const Flat& c = flat[left[(at + 1) % count]];
    if (!(Turn(a, b, c) > 0)) return false;
    for (const std::size_t i : left) {
        const Flat& point = flat[i];
        if (Same(point, a) || Same(point, b) || Same(point, c)) continue;
        if (Covers(a, b, c, point)) return false;
    }
    return true;
}

Triangles Fan(std::size_t corners) {
    Triangles triangles;
    for (std::size_t i = 2; i < corners; ++i) triangles.push_back({0, i - 1, i});
    return triangles;
}

/// A corner on a straight line, which can go without a triangle.
bool IsStraight(const std::vector<Flat>& flat, const std::vector<std::size_t>& left,
                std::size_t at) {
    const std::size_t count = left.size();
    return Turn(flat[left[(at + count - 1) % count]], flat[left[at]],
                flat[left[(at + 1) % count]]) == 0;
}

}  // namespace

Triangles Triangulate(const Polygon& polygon) {
    if (polygon.size() <= 3 || polygon.size() > mostCorners) return Fan(polygon.size());
    const std::vector<Flat> flat = Flattened(polygon);
    std::vector<std::size_t> left(polygon.size());
    std::iota(left.begin(), left.end(), std::size_t{0});
    Triangles triangles;
    std::size_t at = 0;
    std::size_t misses = 0;
    while (left.size() > 3) {
        at %= left.size();
        const bool ear = IsEar(flat, left, at);
        if (!ear && !IsStraight(flat, left, at)) {
            ++at;
            if (++misses > left.size()) return Fan(polygon.size());
            continue;
        }
        const std::size_t count = left.size();
        if (ear)
            triangles.push_back({left[(at + count - 1) % count], left[at], left[(at + 1) % count]});
        left.erase(left.begin() + static_cast<std::ptrdiff_t>(at));
        misses = 0;
    }
    triangles.push_back({left[0], left[1], left[2]});
    return triangles;
}
