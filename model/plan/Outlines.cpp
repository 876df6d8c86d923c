#include "model/plan/Outlines.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <numbers>
#include <optional>
#include <utility>

#include "ZVSmartZvg/BlockInfoDeal.h"
#include "model/plan/Arc.h"
#include "model/plan/Chains.h"
#include "model/plan/PlanPlacement.h"
#include "model/plan/Rings.h"
#include "model/plan/TiltedCurves.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

constexpr double smallestArea = 1e-6;  // square metres

/// Sorts open curves into groups that are joined end to end.
class JoinedCurves {
  public:
    explicit JoinedCurves(const SZVLGZvgGeo& record) {
        for (const CZVIMPolyline3D& polyline : record.polylines) {
            const unsigned int count = polyline.CountOfPoint();
            if (count < 2) continue;
            if (polyline.GetClosedFlag()) {
                groups.emplace_back().polylines.push_back(polyline);
            } else {
                const std::size_t end =
                    Join(polyline.GetPointAt(0), polyline.GetPointAt(count - 1));
                open.emplace_back(
                    end, [&polyline](SZVLGZvgGeo& geo) { geo.polylines.push_back(polyline); });
            }
        }
        for (const CZVIMLineSegment& segment : record.lineSegments) {
            open.emplace_back(
                Join(segment.getStartpt(), segment.getEndpt()),
                [&segment](SZVLGZvgGeo& geo) { geo.lineSegments.push_back(segment); });
        }
        for (const CZVIMBoundArc& arc : record.boundArcs) {
            open.emplace_back(Join(arc.getStartpt(), arc.getEndpt()),
                              [&arc](SZVLGZvgGeo& geo) { geo.boundArcs.push_back(arc); });
        }
        std::map<std::size_t, SZVLGZvgGeo> joined;
        for (const auto& [end, add] : open) add(joined[RootOf(end)]);
        for (auto& [root, geo] : joined) groups.push_back(std::move(geo));
    }

    /// Each holds what may be one outline.
    const std::vector<SZVLGZvgGeo>& Groups() const { return groups; }

  private:
    /// The number of the first end.
    std::size_t Join(const CZVIMPosition& from, const CZVIMPosition& to) {
        const std::size_t first = NumberOf(from);
        const std::size_t root = RootOf(first);
        parents[RootOf(NumberOf(to))] = root;
        return first;
    }

    /// Ends within a tenth of a millimetre, about, are one.
    std::size_t NumberOf(const CZVIMPosition& point) {
        const auto onGrid = [](double metres) {
            return std::fabs(metres) < 1e12 ? std::llround(metres / sectionStep) : 0;
        };
        for (const int x : {0, -1, 1}) {
            for (const int y : {0, -1, 1}) {
                const auto known =
                    numbers.find({onGrid(point.GetX()) + x, onGrid(point.GetY()) + y});
                if (known != numbers.end()) return known->second;
            }
        }
        const std::size_t number = parents.size();
        parents.push_back(number);
        numbers[{onGrid(point.GetX()), onGrid(point.GetY())}] = number;
        return number;
    }

    std::size_t RootOf(std::size_t number) {
        while (parents[number] != number) {
            parents[number] = parents[parents[number]];
            number = parents[number];
        }
        return number;
    }

    std::map<std::pair<long long, long long>, std::size_t> numbers;
    std::vector<std::size_t> parents;
    std::vector<std::pair<std::size_t, std::function<void(SZVLGZvgGeo&)>>> open;
    std::vector<SZVLGZvgGeo> groups;
};

PlanPath PathOf(const CZVIMPolyline& outline) {
    PlanPath path;
    path.closed = true;
    for (unsigned int i = 0; i < outline.CountOfPoint(); ++i) {
        const CZVIMPosition point = outline.GetPointAt(i);
        path.vertices.push_back({{point.GetX(), point.GetY()}, outline.GetBulgeAt(i)});
    }
    return path;
}

std::optional<PlanPath> OutlineOf(const SZVLGZvgGeo& curves) {
    CZVIMPolyline outline;
    if (!CZVLGBlockInfoDeal::GetOneCloseXOYPolyInZvgGeo(curves, outline)) return std::nullopt;
    return PathOf(outline);
}

CZVIMPosition Position(const SectionPoint& point) {
    const PlanPoint flat = InMetres(point);
    return {flat.x, flat.y, 0};
}

std::optional<PlanPath> RingOutline(const SurfaceSection& ring) {
    SZVLGZvgGeo geo;
    for (const SectionPiece& piece : ring) {
        geo.lineSegments.emplace_back(Position(piece.from), Position(piece.to));
    }
    return OutlineOf(geo);
}

PlanPath Line(const PlanPoint& from, const PlanPoint& to, double bulge = 0) {
    return {{{from, bulge}, {to, 0}}, false};
}

PlanPoint Flat(const CZVIMPosition& point) {
    return {point.GetX(), point.GetY()};
}

PlanPath PathOf(const CZVIMPolyline3D& polyline) {
    PlanPath path;
    path.closed = polyline.GetClosedFlag();
    for (unsigned int i = 0; i < polyline.CountOfPoint(); ++i) {
        path.vertices.push_back({Flat(polyline.GetPointAt(i)), 0});
    }
    return path;
}

double FlatBulge(const CZVIMBoundArc& arc) {
    const double bulge = std::tan(arc.getSubtend() * 0.25);
    return arc.getNormal().GetZ() < 0 ? -bulge : bulge;
}

/// Two half circles; a circle that stands upright is a line as seen from above.
PlanPath PathOf(const CZVIMCircle& circle) {
    CZVIMVector normal = circle.getNormal();
    normal.normalise();
    CZVIMVector across = normal.CrossProduct(CZVIMVector(0, 0, 1));
    const bool upright = std::fabs(normal.GetZ()) < 0.5;
    if (!(across.normalise().len() > 0.5)) across = CZVIMVector(1, 0, 0);
    const CZVIMVector radius = across * circle.getRadius();
    const PlanPoint from = Flat(circle.getCenter() - radius);
    const PlanPoint to = Flat(circle.getCenter() + radius);
    if (upright) return Line(from, to);
    return {{{from, 1}, {to, 1}}, true};
}

}  // namespace

// Once: curves in the model are upright. NOLINTNEXTLINE(misc-no-recursion)
std::vector<PlanPath> PlacedOutlines(const SZVLGZvgGeo& record, const CZVIMTransf& toModel) {
    if (!KeepsUpright(toModel)) {
        return PlacedOutlines(CurvesInModel(record, toModel), CZVIMTransf());
    }
    const PlanPlacement placement(toModel);
    std::vector<std::pair<double, PlanPath>> bySize;
    const auto add = [&](const std::optional<PlanPath>& outline) {
        if (!outline) return;
        std::optional<PlanPath> placed = placement.Placed(*outline);
        if (!placed) return;
        const double area = std::fabs(AreaOf(*placed));
        if (area > smallestArea) bySize.emplace_back(area, std::move(*placed));
    };
    const JoinedCurves joined(record);
    for (const SZVLGZvgGeo& curves : joined.Groups()) add(OutlineOf(curves));
    for (const CZVIMCircle& circle : record.circles) {
        const PlanPath path = PathOf(circle);
        if (path.closed) add(path);
    }
    std::stable_sort(bySize.begin(), bySize.end(),
                     [](const auto& a, const auto& b) { return a.first > b.first; });
    std::vector<PlanPath> outlines;
    outlines.reserve(bySize.size());
    for (auto& [area, outline] : bySize) outlines.push_back(std::move(outline));
    return outlines;
}

// NOLINTNEXTLINE(misc-no-recursion)
std::vector<PlanPath> PlacedCurves(const SZVLGZvgGeo& record, const CZVIMTransf& toModel) {
    if (!KeepsUpright(toModel)) return PlacedCurves(CurvesInModel(record, toModel), CZVIMTransf());
    const PlanPlacement placement(toModel);
    std::vector<PlanPath> placed;
    const auto add = [&](const PlanPath& path) {
        std::optional<PlanPath> there = placement.Placed(path);
        if (there && there->vertices.size() > 1) placed.push_back(std::move(*there));
    };
    for (const CZVIMPolyline3D& polyline : record.polylines) add(PathOf(polyline));
    for (const CZVIMLineSegment& segment : record.lineSegments) {
        add(Line(Flat(segment.getStartpt()), Flat(segment.getEndpt())));
    }
    for (const CZVIMBoundArc& arc : record.boundArcs) {
        add(Line(Flat(arc.getStartpt()), Flat(arc.getEndpt()), FlatBulge(arc)));
    }
    for (const CZVIMCircle& circle : record.circles) add(PathOf(circle));
    return placed;
}

SurfaceSection AddRings(const SurfaceSection& section, PlanShapes& shapes) {
    SplitSection split = SplitIntoRings(section);
    PlanArea area;
    for (const SurfaceSection& ring : split.rings) {
        std::optional<PlanPath> outline = RingOutline(ring);
        if (outline && outline->vertices.size() == ring.size()) {
            DropStraightCorners(*outline);
            area.push_back(std::move(*outline));
        } else {
            split.rest.insert(split.rest.end(), ring.begin(), ring.end());
        }
    }
    if (!area.empty()) shapes.areas.push_back(std::move(area));
    return std::move(split.rest);
}

void AddLines(const SurfaceSection& section, PlanShapes& shapes) {
    for (const SectionPiece& piece : section) {
        shapes.lines.push_back(Line(InMetres(piece.from), InMetres(piece.to)));
    }
}

}  // namespace ZVSmartModel
