#include "model/plan/PlacedSurface.h"

#include <cmath>

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

constexpr double farthest = 1e9;

/// Adds the faces of a list: per face its number of corners, then their indices.
void AddFaces(PlacedSurface& surface, const std::vector<int>& facesIndex) {
    std::size_t at = 0;
    while (at < facesIndex.size()) {
        const std::size_t left = facesIndex.size() - at - 1;
        const int corners = facesIndex[at];
        if (corners < 0 || static_cast<std::size_t>(corners) > left) return;
        surface.AddFace(std::span(facesIndex).subspan(at + 1, static_cast<std::size_t>(corners)));
        at += static_cast<std::size_t>(corners) + 1;
    }
}

}  // namespace

PlacedSurface::PlacedSurface(const std::vector<CZVIMPosition>& points, const CZVIMTransf& toModel)
    : points(points) {
    for (CZVIMPosition& point : this->points) point.TransformBy(toModel);
}

bool PlacedSurface::IsUsable(std::size_t corner) const {
    if (corner >= points.size()) return false;
    const CZVIMPosition& point = points[corner];
    return std::fabs(point.GetX()) < farthest && std::fabs(point.GetY()) < farthest &&
           std::fabs(point.GetZ()) < farthest;
}

void ForEachSurface(const SZVLGZvgGeo& record, const CZVIMTransf& toModel,
                    const std::function<void(const PlacedSurface& surface)>& use) {
    const auto take = [&](const std::vector<CZVIMPosition>& points, const std::vector<int>& faces) {
        PlacedSurface surface(points, toModel);
        AddFaces(surface, faces);
        use(surface);
    };
    for (const CZVIMShell& shell : record.shells) take(shell.GetPoints(), shell.GetFacesIndex());
    for (const CZVIMVisualShell& visual : record.visualShells) {
        take(visual.shell.GetPoints(), visual.shell.GetFacesIndex());
    }
    for (const CZVIMVisualPolyFaceMesh& mesh : record.polyFaceMeshes) {
        take(mesh.points, mesh.facesIndex);
    }
    for (const CZVIMMesh& mesh : record.meshes) {
        const CZVIMShell shell = MeshToShell(mesh);
        take(shell.GetPoints(), shell.GetFacesIndex());
    }
    for (const SZVLGZvgGeoRenderMesh& mesh : record.renderMeshes) {
        PlacedSurface surface(mesh.points, toModel);
        const std::span<const u32> indices(mesh.pointIndices);
        for (std::size_t i = 0; i + 3 <= indices.size(); i += 3) {
            surface.AddFace(indices.subspan(i, 3));
        }
        use(surface);
    }
}

}  // namespace ZVSmartModel
