#include "model/plan/MeshSection.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <span>

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

/// Cuts the faces of one surface.
class Cutter {
  public:
    Cutter(const PlacedSurface& surface, const std::vector<double>& heights, Budget& limits)
        : points(surface.Points()), limits(limits), held(limits) {
        for (std::size_t i = 0; i < surface.FaceCount(); ++i) {
            const std::span<const std::size_t> face = surface.Face(i);
            HeightRange reach;
            for (const std::size_t corner : face) reach.Add(points[corner].GetZ());
            auto height = std::upper_bound(heights.begin(), heights.end(), reach.low);
            for (; height != heights.end() && reach.IsCutAt(*height); ++height) {
                CutAt(face, *height);
            }
        }
    }

    const std::map<double, SurfaceSection>& Sections() const { return sections; }

  private:
    void CutAt(std::span<const std::size_t> face, double height) {
        limits.Work(1 + face.size());
        crossings.clear();
        for (std::size_t i = 0; i < face.size(); ++i) {
            AddCrossing(points[face[i]], points[face[(i + 1) % face.size()]], height);
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

    const std::vector<CZVIMPosition>& points;
    Budget& limits;
    HeldMemory held;  ///< by `sections`
    std::vector<SectionPoint> crossings;
    std::map<double, SurfaceSection> sections;
};

}  // namespace

void CutSurface(const PlacedSurface& surface, const std::vector<double>& heights, Budget& limits,
                const UseSection& use) {
    const Cutter cutter(surface, heights, limits);
    for (const auto& [height, section] : cutter.Sections()) {
        if (!section.empty()) use(height, section);
    }
}

}  // namespace ZVSmartModel
