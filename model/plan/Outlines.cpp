#include "model/plan/Outlines.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "ZVSmartZvg/BlockInfoDeal.h"
#include "model/plan/Arc.h"
#include "model/plan/PlanPlacement.h"
#include "model/plan/Rings.h"
#include "model/plan/TiltedCurves.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

/// Where the operation looks, without what is nested: that has a placement of its own.
SZVLGZvgGeo CurvesOf(const SZVLGZvgGeo& record) {
    SZVLGZvgGeo curves;
    curves.polylines = record.polylines;
    curves.lineSegments = record.lineSegments;
    curves.boundArcs = record.boundArcs;
    return curves;
}

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
    return {static_cast<double>(point.x) * sectionStep, static_cast<double>(point.y) * sectionStep,
            0};
}

PlanPoint Flat(const SectionPoint& point) {
    const CZVIMPosition position = Position(point);
    return {position.GetX(), position.GetY()};
}

std::optional<PlanPath> RingOutline(const SurfaceSection& ring) {
    SZVLGZvgGeo geo;
    for (const SectionPiece& piece : ring) {
        geo.lineSegments.emplace_back(Position(piece.from), Position(piece.to));
    }
    return OutlineOf(geo);
}

double DistanceToLine(const PlanPoint& point, const PlanPoint& a, const PlanPoint& b) {
    const double length = std::hypot(b.x - a.x, b.y - a.y);
    if (length == 0) return std::hypot(point.x - a.x, point.y - a.y);
    return std::fabs((b.x - a.x) * (point.y - a.y) - (b.y - a.y) * (point.x - a.x)) / length;
}

/// Takes out corners where the path runs straight on: triangles leave one on each diagonal.
void DropStraightCorners(PlanPath& path) {
    std::vector<PlanVertex> kept;
    const std::vector<PlanVertex>& all = path.vertices;
    for (std::size_t i = 0; i < all.size(); ++i) {
        const PlanPoint& before = kept.empty() ? all.back().point : kept.back().point;
        const PlanPoint& after = all[(i + 1) % all.size()].point;
        if (DistanceToLine(all[i].point, before, after) > sectionStep) kept.push_back(all[i]);
    }
    if (kept.size() >= 3) path.vertices = std::move(kept);
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
std::optional<PlanPath> PlacedOutline(const SZVLGZvgGeo& record, const CZVIMTransf& toModel) {
    if (!KeepsUpright(toModel)) return PlacedOutline(CurvesInModel(record, toModel), CZVIMTransf());
    const std::optional<PlanPath> outline = OutlineOf(CurvesOf(record));
    return outline ? PlanPlacement(toModel).Placed(*outline) : std::nullopt;
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
        shapes.lines.push_back(Line(Flat(piece.from), Flat(piece.to)));
    }
}

}  // namespace ZVSmartModel
