#include "model/scene/Triangulation.h"

#include <cmath>
#include <utility>

namespace ZVSmartModel {

namespace {

using CornerTriangles = std::vector<std::array<std::size_t, 3>>;
using Polygon = std::vector<std::array<double, 3>>;

constexpr std::size_t mostClipped = 1000;

struct Flat {
    double x, y;
};

template <class Polygon>
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

/// The two coordinates that say most of a polygon, in the order in which it is counter-clockwise.
template <class Polygon>
std::pair<std::size_t, std::size_t> FlatAxes(const Polygon& polygon) {
    const std::array<double, 3> normal = NewellNormal(polygon);
    std::size_t drop = 0;
    for (std::size_t axis = 1; axis < 3; ++axis) {
        if (std::fabs(normal[axis]) > std::fabs(normal[drop])) drop = axis;
    }
    std::size_t u = (drop + 1) % 3;
    std::size_t v = (drop + 2) % 3;
    if (normal[drop] < 0) std::swap(u, v);
    return {u, v};
}

std::vector<Flat> Flattened(const Polygon& polygon) {
    const auto [u, v] = FlatAxes(polygon);
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

CornerTriangles Fan(std::size_t corners) {
    CornerTriangles triangles;
    for (std::size_t i = 2; i < corners; ++i) triangles.push_back({0, i - 1, i});
    return triangles;
}

/// Clips corner by corner, going round. What is known of a corner holds until one of its
/// neighbours goes: corners that were found outside its triangle stay outside. So the search for
/// one that lies inside goes on where it ended, and of n corners each looks at all others about
/// three times at most.
class Clipper {
  public:
    Clipper(std::vector<Flat> polygon, Budget& limits)
        : flat(std::move(polygon)), limits(limits), left(flat.size()), corners(left) {
        for (std::size_t i = 0; i < left; ++i) {
            corners[i].before = i == 0 ? left - 1 : i - 1;
            corners[i].behind = i + 1 == left ? 0 : i + 1;
        }
    }

    CornerTriangles Clip() {
        std::size_t at = 0;
        std::size_t misses = 0;
        while (left > 3) {
            limits.Work(1);
            const Corner& corner = corners[at];
            const double turn = Turn(flat[corner.before], flat[at], flat[corner.behind]);
            const bool ear = turn > 0 && IsFree(at);
            const std::size_t next = corner.behind;
            if (ear) triangles.push_back({corner.before, at, next});
            if (ear || turn == 0) {  // a corner on a straight line goes without a triangle
                Remove(at);
                misses = 0;
            } else if (++misses > left) {
                return Fan(flat.size());
            }
            at = next;
        }
        AddLast();
        return std::move(triangles);
    }

  private:
    struct Corner {
        std::size_t before = 0, behind = 0;  ///< the neighbours
        std::size_t searched = 0;            ///< all corners up to here lie outside its triangle
        bool gone = false;
    };

    /// Whether no other corner lies in the triangle of this one, which turns left.
    bool IsFree(std::size_t at) {
        Corner& corner = corners[at];
        const Flat& a = flat[corner.before];
        const Flat& b = flat[at];
        const Flat& c = flat[corner.behind];
        const std::size_t begun = corner.searched;
        const auto blocks = [&](std::size_t i) {
            const Flat& point = flat[i];
            if (corners[i].gone || Same(point, a) || Same(point, b) || Same(point, c)) return false;
            return Covers(a, b, c, point);
        };
        while (corner.searched < flat.size() && !blocks(corner.searched)) ++corner.searched;
        limits.Work(1 + (corner.searched - begun) / 2);
        return corner.searched == flat.size();
    }

    void Remove(std::size_t at) {
        Corner& corner = corners[at];
        corner.gone = true;
        corners[corner.before].behind = corner.behind;
        corners[corner.behind].before = corner.before;
        corners[corner.before].searched = corners[corner.behind].searched = 0;
        --left;
    }

    void AddLast() {
        std::array<std::size_t, 3> last = {};
        std::size_t count = 0;
        for (std::size_t i = 0; i < corners.size(); ++i) {
            if (!corners[i].gone) last[count++] = i;
        }
        triangles.push_back(last);
    }

    const std::vector<Flat> flat;
    Budget& limits;
    std::size_t left;  ///< corners
    std::vector<Corner> corners;
    CornerTriangles triangles;
};

}  // namespace

bool IsConvexQuad(const std::array<std::array<double, 3>, 4>& corners) {
    const auto [u, v] = FlatAxes(corners);
    std::array<Flat, 4> flat;
    for (std::size_t i = 0; i < 4; ++i) flat[i] = {corners[i][u], corners[i][v]};
    for (std::size_t i = 0; i < 4; ++i) {
        if (!(Turn(flat[i], flat[(i + 1) % 4], flat[(i + 2) % 4]) > 0)) return false;
    }
    return true;
}

CornerTriangles Triangulate(const Polygon& polygon, Budget& limits) {
    if (polygon.size() <= 3 || polygon.size() > mostClipped) return Fan(polygon.size());
    return Clipper(Flattened(polygon), limits).Clip();
}

}  // namespace ZVSmartModel
