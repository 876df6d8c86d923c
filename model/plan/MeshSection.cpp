#include "model/plan/MeshSection.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <span>

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

constexpr double farthest = 1e9;

bool IsInReach(const CZVIMPosition& point) {
    return std::fabs(point.GetX()) < farthest && std::fabs(point.GetY()) < farthest &&
           std::fabs(point.GetZ()) < farthest;
}

/// Cuts the faces of one surface.
class Cutter {
  public:
    Cutter(const std::vector<CZVIMPosition>& points, const CZVIMTransf& toModel,
           const std::vector<double>& heights, HeightRange& range, Budget& limits)
        : points(points), heights(heights), range(range), limits(limits), held(limits) {
        for (CZVIMPosition& point : this->points) point.TransformBy(toModel);
    }

    /// `face` holds the corners' indices.
    template <typename Index>
    void Cut(std::span<const Index> face) {
        HeightRange reach;
        for (const Index corner : face) {
            if (!IsUsable(static_cast<std::size_t>(corner))) return;
            reach.Add(points[static_cast<std::size_t>(corner)].GetZ());
        }
        if (reach.IsEmpty()) return;
        range.Add(reach.low);
        range.Add(reach.high);
        auto height = std::upper_bound(heights.begin(), heights.end(), reach.low);
        for (; height != heights.end() && reach.IsCutAt(*height); ++height) CutAt(face, *height);
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

    const std::map<double, SurfaceSection>& Sections() const { return sections; }

  private:
    template <typename Index>
    void CutAt(std::span<const Index> face, double height) {
        limits.Work(1 + face.size());
        crossings.clear();
        for (std::size_t i = 0; i < face.size(); ++i) {
            AddCrossing(points[static_cast<std::size_t>(face[i])],
                        points[static_cast<std::size_t>(face[(i + 1) % face.size()])], height);
        }
        // Along the line in which a face is cut, every other stretch lies within the face.
        if (crossings.size() > 2) std::sort(crossings.begin(), crossings.end());
        SurfaceSection& section = sections[height];
        for (std::size_t i = 0; i + 1 < crossings.size(); i += 2) {
            if (crossings[i] == crossings[i + 1]) continue;
            held.Add(sizeof(SectionPiece));
            section.push_back({crossings[i], crossings[i + 1]});
        }
    }

    bool IsUsable(std::size_t corner) const {
        return corner < points.size() && IsInReach(points[corner]);
    }

    /// From below to above whichever way the face runs, so that neighbours cross in one point.
    void AddCrossing(const CZVIMPosition& a, const CZVIMPosition& b, double height) {
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
    const std::vector<double>& heights;
    HeightRange& range;
    Budget& limits;
    HeldMemory held;  ///< by `sections`
    std::vector<SectionPoint> crossings;
    std::map<double, SurfaceSection> sections;
};

}  // namespace

void CutSurfaces(const SZVLGZvgGeo& record, const CZVIMTransf& toModel,
                 const std::vector<double>& heights, Budget& limits, HeightRange& range,
                 const UseSection& use) {
    const auto keep = [&use](const Cutter& cutter) {
        for (const auto& [height, section] : cutter.Sections()) {
            if (!section.empty()) use(height, section);
        }
    };
    const auto cut = [&](const std::vector<CZVIMPosition>& points, const std::vector<int>& faces) {
        Cutter cutter(points, toModel, heights, range, limits);
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
        Cutter cutter(mesh.points, toModel, heights, range, limits);
        const std::span<const u32> indices(mesh.pointIndices);
        for (std::size_t i = 0; i + 3 <= indices.size(); i += 3) cutter.Cut(indices.subspan(i, 3));
        keep(cutter);
    }
}

}  // namespace ZVSmartModel
