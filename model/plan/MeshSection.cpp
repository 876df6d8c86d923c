#include "model/plan/MeshSection.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

constexpr double farthest = 1e7;

bool IsInReach(const CZVIMPosition& point) {
    return std::fabs(point.GetX()) < farthest && std::fabs(point.GetY()) < farthest &&
           std::fabs(point.GetZ()) < farthest;
}

/// Cuts the faces of one surface.
class Cutter {
  public:
    Cutter(const std::vector<CZVIMPosition>& points, const CZVIMTransf& toModel, double height)
        : points(points), height(height) {
        for (CZVIMPosition& point : this->points) point.TransformBy(toModel);
    }

    /// `face` holds the corners' indices.
    template <typename Index>
    void Cut(std::span<const Index> face) {
        crossings.clear();
        for (const Index corner : face) {
            if (!IsUsable(static_cast<std::size_t>(corner))) return;
        }
        for (std::size_t i = 0; i < face.size(); ++i) {
            AddCrossing(points[static_cast<std::size_t>(face[i])],
                        points[static_cast<std::size_t>(face[(i + 1) % face.size()])]);
        }
        // Along the line in which a face is cut, every other stretch lies within the face.
        if (crossings.size() > 2) std::sort(crossings.begin(), crossings.end());
        for (std::size_t i = 0; i + 1 < crossings.size(); i += 2) {
            if (crossings[i] == crossings[i + 1]) continue;
            section.push_back({crossings[i], crossings[i + 1]});
        }
    }

    /// The surface's face list: per face its number of corners, then their indices.
    void CutAll(const std::vector<int>& facesIndex) {
        std::size_t at = 0;
        while (at < facesIndex.size()) {
            const std::size_t left = facesIndex.size() - at - 1;
            const int corners = facesIndex[at];
            if (corners < 0 || static_cast<std::size_t>(corners) > left) return;
            Cut(std::span(facesIndex).subspan(at + 1, static_cast<std::size_t>(corners)));
            at += static_cast<std::size_t>(corners) + 1;
        }
    }

    SurfaceSection Take() { return std::move(section); }

  private:
    bool IsUsable(std::size_t corner) const {
        return corner < points.size() && IsInReach(points[corner]);
    }

    /// From below to above whichever way the face runs, so that neighbours cross in one point.
    void AddCrossing(const CZVIMPosition& a, const CZVIMPosition& b) {
        const bool aAbove = a.GetZ() >= height;
        if (aAbove == (b.GetZ() >= height)) return;
        const CZVIMPosition& low = aAbove ? b : a;
        const CZVIMPosition& high = aAbove ? a : b;
        const double part = (height - low.GetZ()) / (high.GetZ() - low.GetZ());
        crossings.push_back({OnGrid(low.GetX() + part * (high.GetX() - low.GetX())),
                             OnGrid(low.GetY() + part * (high.GetY() - low.GetY()))});
    }

    static std::int64_t OnGrid(double metres) { return std::llround(metres / sectionStep); }

    std::vector<CZVIMPosition> points;  ///< in the model
    double height;
    std::vector<SectionPoint> crossings;
    SurfaceSection section;
};

}  // namespace

std::vector<SurfaceSection> CutSurfaces(const SZVLGZvgGeo& record, const CZVIMTransf& toModel,
                                        double height) {
    std::vector<SurfaceSection> sections;
    const auto keep = [&sections](Cutter& cutter) {
        SurfaceSection section = cutter.Take();
        if (!section.empty()) sections.push_back(std::move(section));
    };
    const auto cut = [&](const std::vector<CZVIMPosition>& points, const std::vector<int>& faces) {
        Cutter cutter(points, toModel, height);
        cutter.CutAll(faces);
        keep(cutter);
    };
    for (const CZVIMShell& shell : record.shells) cut(shell.GetPoints(), shell.GetFacesIndex());
    for (const CZVIMVisualShell& visual : record.visualShells) {
        cut(visual.shell.GetPoints(), visual.shell.GetFacesIndex());
    }
    for (const CZVIMVisualPolyFaceMesh& mesh : record.polyFaceMeshes) {
        cut(mesh.points, mesh.facesIndex);
    }
    for (const CZVIMMesh& mesh : record.meshes) {
        const CZVIMShell shell = MeshToShell(mesh);
        cut(shell.GetPoints(), shell.GetFacesIndex());
    }
    for (const SZVLGZvgGeoRenderMesh& mesh : record.renderMeshes) {
        Cutter cutter(mesh.points, toModel, height);
        const std::span<const u32> indices(mesh.pointIndices);
        for (std::size_t i = 0; i + 3 <= indices.size(); i += 3) cutter.Cut(indices.subspan(i, 3));
        keep(cutter);
    }
    return sections;
}

}  // namespace ZVSmartModel
