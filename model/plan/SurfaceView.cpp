#include "model/plan/SurfaceView.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <tuple>
#include <utility>

#include "model/plan/Chains.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

constexpr double steepest = 0.02;    // sine of the angle to the vertical: steeper is not seen
constexpr double sharpFold = 0.94;   // cosine of 20 degrees
constexpr double levelSlope = 0.99;  // cosine

using Vector = std::array<double, 3>;

struct GridPoint {
    SectionPoint flat;
    std::int64_t z = 0;

    friend auto operator<=>(const GridPoint&, const GridPoint&) = default;
};

struct Edge {
    GridPoint low, high;  ///< in order, whichever way it runs
    std::size_t face;
    bool isForward;

    bool IsBetweenSame(const Edge& other) const { return low == other.low && high == other.high; }
};

std::int64_t OnGrid(double metres) {
    return std::llround(metres / sectionStep);
}

GridPoint OnGrid(const CZVIMPosition& point) {
    return {{OnGrid(point.GetX()), OnGrid(point.GetY())}, OnGrid(point.GetZ())};
}

/// By Newell: its length is twice the area.
Vector NormalOf(const std::vector<CZVIMPosition>& face) {
    Vector normal = {};
    const CZVIMPosition& origin = face.front();
    for (std::size_t i = 1; i + 1 < face.size(); ++i) {
        const CZVIMVector cross = (face[i] - origin).CrossProduct(face[i + 1] - origin);
        normal[0] += cross.GetX();
        normal[1] += cross.GetY();
        normal[2] += cross.GetZ();
    }
    return normal;
}

double LengthOf(const Vector& vector) {
    return std::hypot(vector[0], vector[1], vector[2]);
}

class Viewer {
  public:
    Viewer(const PlacedSurface& surface, const HeightBand& band, double cutAt, SeenFrom from,
           Budget& limits)
        : surface(surface), band(band), cutAt(cutAt), keepsBelow(cutAt == band.high), held(limits) {
        limits.Work(20 * surface.FaceCount());
        const int outside = Outside() * (from == SeenFrom::Above ? 1 : -1);
        for (std::size_t i = 0; i < surface.FaceCount(); ++i) {
            Load(i);
            if (face.size() >= 3 && IsInBand()) Add(outside);
        }
    }

    SurfaceView Take() {
        SurfaceView view;
        view.cover = ChainDirected(CancelOpposites(std::move(sides)));
        view.edges = ChainPieces(SeenEdges());
        view.levels = std::move(levels);
        view.reach = reach;
        return view;
    }

  private:
    void Load(std::size_t number) {
        face.clear();
        for (const std::size_t corner : surface.Face(number)) {
            face.push_back(surface.Points()[corner]);
        }
    }

    /// 1 where faces turn counter-clockwise as seen from outside, -1 where they turn the other
    /// way, 0 for an open surface.
    int Outside() {
        double volume = 0;
        std::vector<Edge> all;
        for (std::size_t i = 0; i < surface.FaceCount(); ++i) {
            Load(i);
            if (face.size() < 3) continue;
            double height = 0;
            for (const CZVIMPosition& corner : face) height += corner.GetZ() - surface.Range().low;
            volume += NormalOf(face)[2] * height / static_cast<double>(face.size());
            AddEdges(all, i);
        }
        std::sort(all.begin(), all.end(), [](const Edge& a, const Edge& b) {
            return std::tie(a.low, a.high) < std::tie(b.low, b.high);
        });
        for (std::size_t i = 0; i < all.size();) {
            int forward = 0;
            const Edge& first = all[i];
            for (; i < all.size() && all[i].IsBetweenSame(first); ++i) {
                forward += all[i].isForward ? 1 : -1;
            }
            if (forward != 0) return 0;
        }
        return volume > 0 ? 1 : -1;
    }

    void AddEdges(std::vector<Edge>& to, std::size_t number) {
        for (std::size_t i = 0; i < face.size(); ++i) {
            const CZVIMPosition& a = face[i];
            const CZVIMPosition& b = face[(i + 1) % face.size()];
            const GridPoint from = OnGrid(a), end = OnGrid(b);
            if (from == end) continue;
            held.Add(sizeof(Edge));
            to.push_back({std::min(from, end), std::max(from, end), number, from < end});
        }
    }

    bool IsInBand() const {
        HeightRange range;
        for (const CZVIMPosition& corner : face) range.Add(corner.GetZ());
        return range.high > band.low && range.low < band.high;
    }

    bool IsKept(const CZVIMPosition& point) const {
        return keepsBelow ? point.GetZ() <= cutAt : point.GetZ() >= cutAt;
    }

    /// Cuts the face off at the plane (Sutherland and Hodgman 1974). Where the face is not convex
    /// what is left may run along the cut there and back, which winds around nothing.
    void Clip() {
        std::vector<CZVIMPosition> kept;
        for (std::size_t i = 0; i < face.size(); ++i) {
            const CZVIMPosition& a = face[i];
            const CZVIMPosition& b = face[(i + 1) % face.size()];
            if (IsKept(a)) kept.push_back(a);
            if (IsKept(a) == IsKept(b)) continue;
            // From below to above, so that both faces of an edge are cut in one point.
            const CZVIMPosition& low = a.GetZ() < b.GetZ() ? a : b;
            const CZVIMPosition& high = a.GetZ() < b.GetZ() ? b : a;
            const double part = (cutAt - low.GetZ()) / (high.GetZ() - low.GetZ());
            kept.emplace_back(low.GetX() + part * (high.GetX() - low.GetX()),
                              low.GetY() + part * (high.GetY() - low.GetY()), cutAt);
        }
        face = std::move(kept);
    }

    void Add(int outside) {
        const Vector normal = NormalOf(face);
        const double length = LengthOf(normal);
        if (!(length > 0) || !(std::fabs(normal[2]) > steepest * length)) return;
        if (outside != 0 && normal[2] * outside < 0) return;
        Clip();
        if (face.size() < 3) return;
        for (const CZVIMPosition& corner : face) reach.Add(corner.GetZ());
        const double turn = normal[2] < 0 ? -1 : 1;
        AddEdges(edges, normals.size());
        normals.push_back(
            {turn * normal[0] / length, turn * normal[1] / length, turn * normal[2] / length});
        for (std::size_t i = 0; i < face.size(); ++i) {
            const SectionPoint from = OnGrid(face[i]).flat;
            const SectionPoint to = OnGrid(face[(i + 1) % face.size()]).flat;
            if (from == to) continue;
            held.Add(sizeof(SectionPiece));
            sides.push_back(turn > 0 ? SectionPiece{from, to} : SectionPiece{to, from});
        }
        if (normals.back()[2] > levelSlope) AddLevel(length / 2);
    }

    void AddLevel(double area) {
        LevelFace level = {face.front().GetZ(), area, {}, {}};
        for (const CZVIMPosition& corner : face) {
            level.corners.push_back({corner.GetX(), corner.GetY()});
            level.middle.x += corner.GetX() / static_cast<double>(face.size());
            level.middle.y += corner.GetY() / static_cast<double>(face.size());
        }
        held.Add(sizeof level + level.corners.size() * sizeof(PlanPoint));
        levels.push_back(std::move(level));
    }

    /// Edges of one seen face, and those at which two meet at an angle.
    SurfaceSection SeenEdges() {
        std::sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) {
            return std::tie(a.low, a.high) < std::tie(b.low, b.high);
        });
        SurfaceSection seen;
        for (std::size_t i = 0; i < edges.size();) {
            const Edge& first = edges[i];
            bool isSharp = false;
            std::size_t count = 0;
            for (; i < edges.size() && edges[i].IsBetweenSame(first); ++i, ++count) {
                const Vector& a = normals[first.face];
                const Vector& b = normals[edges[i].face];
                isSharp |= a[0] * b[0] + a[1] * b[1] + a[2] * b[2] < sharpFold;
            }
            const bool isCut = first.low.z == first.high.z && first.low.z == OnGrid(cutAt);
            const bool isUpright = first.low.flat == first.high.flat;
            if ((count == 1 && !isCut) || isSharp) {
                if (!isUpright) seen.push_back({first.low.flat, first.high.flat});
            }
        }
        const auto order = [](const SectionPiece& a, const SectionPiece& b) {
            return std::tie(a.from, a.to) < std::tie(b.from, b.to);
        };
        std::sort(seen.begin(), seen.end(), order);  // steps: a tread ends over the next one
        const auto isSame = [](const SectionPiece& a, const SectionPiece& b) {
            return a.from == b.from && a.to == b.to;
        };
        seen.erase(std::unique(seen.begin(), seen.end(), isSame), seen.end());
        return seen;
    }

    const PlacedSurface& surface;
    HeightBand band;
    double cutAt;
    bool keepsBelow;
    HeldMemory held;
    std::vector<CZVIMPosition> face;  ///< the one that is looked at
    std::vector<Edge> edges;
    std::vector<Vector> normals;  ///< of what is seen, upwards
    SurfaceSection sides;         ///< counter-clockwise around each
    std::vector<LevelFace> levels;
    HeightRange reach;
};

}  // namespace

SurfaceView ViewOf(const PlacedSurface& surface, const HeightBand& band, double cutAt,
                   SeenFrom from, Budget& limits) {
    return Viewer(surface, band, cutAt, from, limits).Take();
}

}  // namespace ZVSmartModel
