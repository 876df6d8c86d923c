#include "model/export/SurfaceDetails.h"

#include <cmath>
#include <unordered_map>

#include "model/export/MeshCompression.h"
#include "model/scene/Normals.h"
#include "model/scene/PointMath.h"
#include "model/scene/Welding.h"

namespace ZVSmartModel {

namespace {

Point Wide(const std::array<float, 3>& point) {
    return {point[0], point[1], point[2]};
}

void AddSurfaceNormals(SceneSurface& surface, const ExportOptions& options, Budget& limits) {
    Triangles triangles;
    triangles.triangles = std::move(surface.triangles);
    triangles.points.reserve(surface.points.size());
    for (const auto& point : surface.points) triangles.points.push_back(Wide(point));
    BodyOptions wanted;
    wanted.normals = options.normals;
    wanted.creaseAngle = options.creaseAngle;
    AddNormals(triangles, wanted, limits);
    surface.points.clear();
    for (const auto& [x, y, z] : triangles.points) {
        surface.points.push_back(
            {static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)});
    }
    surface.triangles = std::move(triangles.triangles);
    surface.normals = std::move(triangles.normals);
}

/// The sides of triangles, each by its two places, in the order in which they come.
class Sides {
  public:
    explicit Sides(double creaseAngle) : cosine(std::cos(creaseAngle)) {}

    void Add(const std::array<std::uint32_t, 2>& corners, std::uint64_t from, std::uint64_t to,
             const Point& normal) {
        constexpr unsigned int bitsOfPlace = 32;
        const std::uint64_t places =
            std::min(from, to) << bitsOfPlace | std::max(from, to);  // either way round
        const auto [known, isNew] = numbers.try_emplace(places, all.size());
        if (isNew) {
            all.push_back({corners, normal});
            return;
        }
        Side& side = all[known->second];
        side.isShared = true;
        side.isCrease = side.isCrease ||
                        Dot(side.normal, normal) <= cosine * Length(side.normal) * Length(normal);
    }

    /// Those that end the surface or are its creases.
    std::vector<std::array<std::uint32_t, 2>> Edges() const {
        std::vector<std::array<std::uint32_t, 2>> edges;
        for (const Side& side : all) {
            if (!side.isShared || side.isCrease) edges.push_back(side.corners);
        }
        return edges;
    }

  private:
    struct Side {
        std::array<std::uint32_t, 2> corners;
        Point normal;  ///< of the first triangle, of any length
        bool isShared = false;
        bool isCrease = false;
    };

    double cosine;
    std::vector<Side> all;
    std::unordered_map<std::uint64_t, std::size_t> numbers;
};

void AddEdges(SceneSurface& surface, double creaseAngle, Budget& limits) {
    constexpr std::uint64_t bytesOfTriangle = 600, stepsOfTriangle = 60;
    HeldMemory held(limits);
    held.Add(bytesOfTriangle * surface.triangles.size());
    limits.Work(stepsOfTriangle * surface.triangles.size());
    Welding welding;
    std::vector<std::uint32_t> places;
    for (const auto& point : surface.points) places.push_back(welding.Number(Wide(point)));
    Sides sides(creaseAngle);
    for (const auto& triangle : surface.triangles) {
        const Point a = Wide(surface.points[triangle[0]]);
        const Point normal = Cross(Minus(Wide(surface.points[triangle[1]]), a),
                                   Minus(Wide(surface.points[triangle[2]]), a));
        if (!(Length(normal) > 0)) continue;  // no area: its sides belong to the others
        for (std::size_t i = 0; i < 3; ++i) {
            const std::uint32_t from = triangle[i], to = triangle[(i + 1) % 3];
            sides.Add({from, to}, places[from], places[to], normal);
        }
    }
    surface.edges = sides.Edges();
    limits.Memory(surface.edges.size() * sizeof surface.edges[0]);
}

}  // namespace

void AddDetails(Scene& scene, const ExportOptions& options, Budget& limits, ProgressPace& pace) {
    for (std::size_t i = 0; i < scene.surfaces.size(); ++i) {
        pace.Tell("preparing", i, scene.surfaces.size());
        SceneSurface& surface = scene.surfaces[i];
        if (options.normals != Normals::None) AddSurfaceNormals(surface, options, limits);
        if (options.compress) OrderForCompression(surface);
        if (options.edges) AddEdges(surface, options.creaseAngle, limits);
    }
}

}  // namespace ZVSmartModel
