#include "model/scene/Normals.h"

#include <cmath>
#include <utility>

#include "model/scene/PointMath.h"
#include "model/scene/Welding.h"

namespace ZVSmartModel {

namespace {

constexpr std::uint32_t none = 0xFFFFFFFF;
constexpr Point nowhere = {0, 0, 0};

/// Of length 1, or `nowhere`.
Point Unit(const Point& vector) {
    const double length = Length(vector);
    if (!(length > 0)) return nowhere;
    return {vector[0] / length, vector[1] / length, vector[2] / length};
}

/// Whether two normals differ by no more than what rounding makes of one.
bool AreSame(const Point& a, const Point& b) {
    constexpr double noise = 1e-5;
    return std::fabs(a[0] - b[0]) < noise && std::fabs(a[1] - b[1]) < noise &&
           std::fabs(a[2] - b[2]) < noise;
}

std::array<Point, 3> CornersOf(const Triangles& surface, std::size_t triangle) {
    const auto [a, b, c] = surface.triangles[triangle];
    return {surface.points[a], surface.points[b], surface.points[c]};
}

Point NormalOf(const std::array<Point, 3>& corners) {
    return Unit(Cross(Minus(corners[1], corners[0]), Minus(corners[2], corners[0])));
}

double AngleAt(const std::array<Point, 3>& corners, std::size_t corner) {
    const Point a = Minus(corners[(corner + 1) % 3], corners[corner]);
    const Point b = Minus(corners[(corner + 2) % 3], corners[corner]);
    return std::atan2(Length(Cross(a, b)), Dot(a, b));
}

/// The different directions of the triangles that meet at each place, as a chain for each; so a
/// fan of many flat triangles is one.
class Directions {
  public:
    explicit Directions(Budget& limits) : limits(limits) {}

    /// Notes that triangles of this normal take `angle` more of the place; returns the number of
    /// this direction of this place.
    std::uint32_t Add(std::uint32_t place, const Point& normal, double angle) {
        if (place >= first.size()) first.resize(place + std::size_t{1}, none);
        std::uint32_t steps = 1;
        std::uint32_t at = first[place];
        for (; at != none && !AreSame(all[at].normal, normal); at = all[at].next) ++steps;
        limits.Work(steps);
        if (at == none) {
            at = static_cast<std::uint32_t>(all.size());
            all.push_back({normal, place, first[place], 0});
            first[place] = at;
        }
        all[at].angle += angle;
        return at;
    }

    std::size_t Size() const { return all.size(); }
    const Point& Normal(std::size_t number) const { return all[number].normal; }

    /// The mean of a direction and those at its place that are less than an angle away, each
    /// weighed by the angle that its triangles take there (Thürmer and Wüthrich 1998).
    Point Mean(std::size_t number, double cosine) const {
        const Point& own = all[number].normal;
        Point sum = nowhere;
        std::uint32_t steps = 1;
        for (std::uint32_t at = first[all[number].place]; at != none; at = all[at].next) {
            ++steps;
            const Direction& other = all[at];
            if (at != number && own != nowhere && !(Dot(own, other.normal) > cosine)) continue;
            for (std::size_t axis = 0; axis < 3; ++axis) {
                sum[axis] += other.normal[axis] * other.angle;
            }
        }
        limits.Work(steps);
        const Point mean = Unit(sum);
        return mean == nowhere ? own : mean;
    }

  private:
    struct Direction {
        Point normal;
        std::uint32_t place;
        std::uint32_t next;  ///< of the same place
        double angle;
    };

    Budget& limits;
    std::vector<std::uint32_t> first;  ///< by place
    std::vector<Direction> all;
};

/// A normal for each corner of each triangle.
std::vector<Point> CornerNormals(const Triangles& surface, const BodyOptions& options,
                                 Budget& limits) {
    std::vector<Point> normals;
    normals.reserve(3 * surface.triangles.size());
    if (options.normals == Normals::Flat) {
        for (std::size_t i = 0; i < surface.triangles.size(); ++i) {
            normals.insert(normals.end(), 3, NormalOf(CornersOf(surface, i)));
        }
        return normals;
    }
    Welding welding;
    std::vector<std::uint32_t> places;
    places.reserve(surface.points.size());
    for (const Point& point : surface.points) places.push_back(welding.Number(point));
    Directions directions(limits);
    std::vector<std::uint32_t> directionOf;
    directionOf.reserve(3 * surface.triangles.size());
    for (std::size_t i = 0; i < surface.triangles.size(); ++i) {
        const std::array<Point, 3> corners = CornersOf(surface, i);
        const Point normal = NormalOf(corners);
        for (std::size_t corner = 0; corner < 3; ++corner) {
            const std::uint32_t place = places[surface.triangles[i][corner]];
            directionOf.push_back(directions.Add(place, normal, AngleAt(corners, corner)));
        }
    }
    const double cosine = std::cos(options.creaseAngle);
    std::vector<Point> means;
    means.reserve(directions.Size());
    for (std::size_t i = 0; i < directions.Size(); ++i) means.push_back(directions.Mean(i, cosine));
    for (const std::uint32_t direction : directionOf) normals.push_back(means[direction]);
    return normals;
}

}  // namespace

void AddNormals(Triangles& surface, const BodyOptions& options, Budget& limits) {
    if (options.normals == Normals::None) return;
    constexpr std::uint64_t bytesOfTriangle = 600;
    HeldMemory held(limits);
    held.Add(bytesOfTriangle * surface.triangles.size());
    const std::vector<Point> normals = CornerNormals(surface, options, limits);
    // Each point with each of its normals is a point.
    Directions different(limits);
    std::vector<Point> points;
    for (std::size_t i = 0; i < normals.size(); ++i) {
        std::uint32_t& corner = surface.triangles[i / 3][i % 3];
        const Point old = surface.points[corner];
        corner = different.Add(corner, normals[i], 0);
        if (corner == points.size()) points.push_back(old);
    }
    surface.points = std::move(points);
    for (std::size_t i = 0; i < different.Size(); ++i) {
        Point n = different.Normal(i);
        if (n == nowhere) n = {0, 0, 1};
        surface.normals.push_back(
            {static_cast<float>(n[0]), static_cast<float>(n[1]), static_cast<float>(n[2])});
    }
    limits.Memory(surface.points.size() * (sizeof(Point) + sizeof surface.normals[0]));
}

}  // namespace ZVSmartModel
