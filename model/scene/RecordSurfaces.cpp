#include "model/scene/RecordSurfaces.h"

#include <map>
#include <utility>

#include "model/element/ElementRecord.h"
#include "model/scene/PointMath.h"
#include "model/scene/RecordWalk.h"
#include "model/scene/TriangleLists.h"
#include "model/scene/Triangulation.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

/// The point lists of a record move into one surface; indices count from where theirs begins.
class SurfaceFiller {
  public:
    SurfaceFiller(Triangles& surface, const CZVIMTransf& toShape, Budget& limits)
        : surface(surface),
          toShape(toShape),
          isInPlace(toShape.identity()),
          turnsRound(!isInPlace && Mirrors(TransformOf(toShape))),
          limits(limits) {}

    void Begin(const std::vector<CZVIMPosition>& points) {
        first = surface.points.size();
        count = points.size();
        surface.points.reserve(first + count);
        if (isInPlace) {
            for (const CZVIMPosition& point : points) {
                surface.points.push_back({point.GetX(), point.GetY(), point.GetZ()});
            }
            return;
        }
        for (CZVIMPosition point : points) {
            point.TransformBy(toShape);
            surface.points.push_back({point.GetX(), point.GetY(), point.GetZ()});
        }
    }

    /// A flat face list: per face its number of corners, then their indices.
    void AddFaces(const std::vector<int>& faces) {
        std::size_t at = 0;
        while (at < faces.size()) {
            const std::size_t left = faces.size() - at - 1;
            if (faces[at] < 0 || static_cast<std::size_t>(faces[at]) > left) return;
            const auto corners = static_cast<std::size_t>(faces[at]);
            AddFace(faces.data() + at + 1, corners);
            at += corners + 1;
        }
    }

    void AddTriangle(std::size_t a, std::size_t b, std::size_t c) {
        if (a >= count || b >= count || c >= count) return;
        if (turnsRound) std::swap(b, c);
        surface.triangles.push_back({Index(a), Index(b), Index(c)});
    }

  private:
    std::uint32_t Index(std::size_t local) const {
        return static_cast<std::uint32_t>(first + local);
    }

    void AddFace(const int* corners, std::size_t number) {
        const auto corner = [corners](std::size_t i) {
            return static_cast<std::size_t>(corners[i]);
        };
        if (number == 3) return AddTriangle(corner(0), corner(1), corner(2));
        for (std::size_t i = 0; i < number; ++i) {
            if (corner(i) >= count) return;  // a negative index is a huge one here
        }
        const auto point = [&](std::size_t i) { return surface.points[first + corner(i)]; };
        if (number == 4 && IsConvexQuad({point(0), point(1), point(2), point(3)})) {
            limits.Work(2);
            AddTriangle(corner(3), corner(0), corner(1));
            return AddTriangle(corner(1), corner(2), corner(3));
        }
        std::vector<Point> polygon;
        polygon.reserve(number);
        for (std::size_t i = 0; i < number; ++i) polygon.push_back(point(i));
        for (const auto& [a, b, c] : Triangulate(polygon, limits)) {
            AddTriangle(corner(a), corner(b), corner(c));
        }
    }

    Triangles& surface;
    const CZVIMTransf& toShape;
    const bool isInPlace, turnsRound;
    Budget& limits;
    std::size_t first = 0;
    std::size_t count = 0;
};

void AddRecord(const SZVLGZvgGeo& geo, SurfaceFiller& filler) {
    const auto addShell = [&filler](const CZVIMShell& shell) {
        filler.Begin(shell.GetPoints());
        filler.AddFaces(shell.GetFacesIndex());
    };
    for (const CZVIMShell& shell : geo.shells) addShell(shell);
    for (const CZVIMVisualShell& visual : geo.visualShells) addShell(visual.shell);
    for (const CZVIMMesh& mesh : geo.meshes) addShell(MeshToShell(mesh));
    for (const CZVIMVisualPolyFaceMesh& mesh : geo.polyFaceMeshes) {
        filler.Begin(mesh.points);
        filler.AddFaces(mesh.facesIndex);
    }
    for (const SZVLGZvgGeoRenderMesh& mesh : geo.renderMeshes) {
        filler.Begin(mesh.points);
        const std::vector<u32>& corners = mesh.pointIndices;
        for (std::size_t i = 0; i + 2 < corners.size(); i += 3) {
            filler.AddTriangle(corners[i], corners[i + 1], corners[i + 2]);
        }
    }
}

}  // namespace

std::vector<Triangles> SurfacesOf(const SZVLGZvgGeo& geo, Budget& limits) {
    std::map<std::optional<Look>, Triangles> byLook;
    VisitNested(geo, [&](const NestedRecord& record) {
        std::optional<Look> look;
        if (record.coloured != nullptr) look = LookOf(*record.coloured, "");
        SurfaceFiller filler(byLook[look], record.toOutermost, limits);
        AddRecord(*record.geo, filler);
    });
    std::vector<Triangles> surfaces;
    for (auto& [look, surface] : byLook) {
        DropUndrawable(surface);
        if (surface.triangles.empty()) continue;
        surface.look = look;
        surfaces.push_back(std::move(surface));
    }
    return surfaces;
}

}  // namespace ZVSmartModel
