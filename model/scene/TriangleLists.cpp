#include "model/scene/TriangleLists.h"

#include <algorithm>
#include <utility>

#include "model/scene/PointMath.h"

namespace ZVSmartModel {

void DropUndrawable(Triangles& surface) {
    constexpr std::uint32_t unused = 0xFFFFFFFF;
    const auto isDrawable = [&surface](const std::array<std::uint32_t, 3>& triangle) {
        const auto [a, b, c] = triangle;
        if (a == b || b == c || c == a) return false;
        return std::all_of(triangle.begin(), triangle.end(), [&](std::uint32_t index) {
            return index < surface.points.size() && IsNear(surface.points[index]);
        });
    };
    std::vector<std::uint32_t> newIndex(surface.points.size(), unused);
    std::vector<Point> points;
    points.reserve(surface.points.size());
    std::size_t kept = 0;
    for (std::array<std::uint32_t, 3> triangle : surface.triangles) {
        if (!isDrawable(triangle)) continue;
        for (std::uint32_t& corner : triangle) {
            std::uint32_t& index = newIndex[corner];
            if (index == unused) {
                index = static_cast<std::uint32_t>(points.size());
                points.push_back(surface.points[corner]);
            }
            corner = index;
        }
        surface.triangles[kept++] = triangle;
    }
    surface.triangles.resize(kept);
    surface.points = std::move(points);
}

void AddPlaced(Triangles& whole, const Triangles& part, const Transform& placement) {
    const auto first = static_cast<std::uint32_t>(whole.points.size());
    for (const Point& point : part.points) whole.points.push_back(Placed(placement, point));
    const bool turnsRound = Mirrors(placement);
    for (auto [a, b, c] : part.triangles) {
        if (turnsRound) std::swap(b, c);
        whole.triangles.push_back({first + a, first + b, first + c});
    }
}

}  // namespace ZVSmartModel
