#include "model/scene/RecordCurves.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "model/element/Utf8.h"
#include "model/scene/PointMath.h"
#include "model/scene/RecordWalk.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

constexpr double fullTurn = 2 * std::numbers::pi;
constexpr double leastChords = 24, mostChords = 4096;  // of a full turn

Point PointOf(const CZVIMPosition& position) {
    return {position.GetX(), position.GetY(), position.GetZ()};
}

CZVIMVector Turned(const Transform& placement, const CZVIMVector& direction) {
    const auto row = [&](std::size_t at) {
        return placement[at] * direction.GetX() + placement[at + 1] * direction.GetY() +
               placement[at + 2] * direction.GetZ();
    };
    return {row(0), row(4), row(8)};
}

Sweep PlacedSweep(const Transform& placement, const Sweep& sweep) {
    const auto [x, y, z] = Placed(placement, PointOf(sweep.center));
    return {{x, y, z}, Turned(placement, sweep.u), Turned(placement, sweep.v), sweep.radians};
}

/// The longer half axis of the ellipse: the root of the larger eigenvalue of what the scalar
/// products of u and v make up.
double LongestRadius(const Sweep& sweep) {
    const double uu = sweep.u.DotProduct(sweep.u);
    const double vv = sweep.v.DotProduct(sweep.v);
    const double uv = sweep.u.DotProduct(sweep.v);
    return std::sqrt((uu + vv + std::hypot(uu - vv, 2 * uv)) / 2);
}

/// Half of a chord's angle a leaves 1 - cos(a / 2) = 2 sin²(a / 4) of the radius.
std::size_t CountChords(const Sweep& sweep, double chordError) {
    const double share = std::min(1.0, std::sqrt(chordError / 2 / LongestRadius(sweep)));
    const double turnAtMost =
        std::clamp(4 * std::asin(share), fullTurn / mostChords, fullTurn / leastChords);
    constexpr double noise = 1e-9;
    const double chords = std::ceil(std::fabs(sweep.radians) / turnAtMost - noise);
    return static_cast<std::size_t>(std::max(1.0, chords));
}

/// The curves of one record.
class CurveGatherer {
  public:
    CurveGatherer(std::vector<RecordCurve>& curves, const NestedRecord& record)
        : curves(curves), toOutermost(TransformOf(record.toOutermost)) {
        if (record.attr != nullptr) role = ToUtf8(record.attr->styleName);
    }

    void Add(const CZVIMPolyline3D& polyline) {
        std::vector<Point> points;
        points.reserve(polyline.CountOfPoint());
        for (unsigned int i = 0; i < polyline.CountOfPoint(); ++i) {
            points.push_back(PointOf(polyline.GetPointAt(i)));
        }
        Add(std::move(points), polyline.GetClosedFlag(), std::nullopt);
    }
    void Add(const CZVIMLineSegment& segment) {
        Add({PointOf(segment.getStartpt()), PointOf(segment.getEndpt())}, false, std::nullopt);
    }
    void Add(const CZVIMBoundArc& arc) {
        Add({PointOf(arc.getStartpt()), PointOf(arc.getEndpt())}, false, SweepOf(arc));
    }
    void Add(const CZVIMCircle& circle) { Add({}, true, SweepOf(circle)); }

  private:
    void Add(std::vector<Point> points, bool closed, std::optional<Sweep> sweep) {
        if (points.size() < 2 && !sweep) return;
        if (sweep) sweep = PlacedSweep(toOutermost, *sweep);
        for (Point& point : points) point = Placed(toOutermost, point);
        const bool isNear = std::all_of(points.begin(), points.end(),
                                        [](const Point& point) { return IsNear(point); });
        if (!isNear || (sweep && !IsUsable(*sweep))) return;
        curves.push_back({role, std::move(points), closed, sweep});
    }

    static bool IsUsable(const Sweep& sweep) {
        constexpr double noise = 1e-9;
        return std::fabs(sweep.radians) <= fullTurn + noise && IsNear(PointOf(sweep.center)) &&
               IsNear(PointOf(sweep.center + sweep.u)) && IsNear(PointOf(sweep.center + sweep.v));
    }

    std::vector<RecordCurve>& curves;
    Transform toOutermost;
    std::string role;
};

}  // namespace

std::vector<RecordCurve> CurvesOf(const SZVLGZvgGeo& geo) {
    std::vector<RecordCurve> curves;
    VisitNested(geo, [&](const NestedRecord& record) {
        CurveGatherer gatherer(curves, record);
        for (const CZVIMPolyline3D& polyline : record.geo->polylines) gatherer.Add(polyline);
        for (const CZVIMLineSegment& segment : record.geo->lineSegments) gatherer.Add(segment);
        for (const CZVIMBoundArc& arc : record.geo->boundArcs) gatherer.Add(arc);
        for (const CZVIMCircle& circle : record.geo->circles) gatherer.Add(circle);
    });
    return curves;
}

Polyline PlacedCurve(const RecordCurve& curve, const Transform& placement, double chordError,
                     Budget& limits) {
    Polyline polyline;
    polyline.role = curve.role;
    polyline.closed = curve.closed;
    std::optional<Sweep> sweep;
    if (curve.sweep) sweep = PlacedSweep(placement, *curve.sweep);
    const std::size_t chords = sweep ? CountChords(*sweep, chordError) : 0;
    limits.Work(10 + curve.points.size() + 4 * chords);
    limits.Memory(sizeof polyline + curve.role.size() +
                  (curve.points.size() + chords) * sizeof(Point));
    polyline.points.reserve(curve.points.size() + chords);
    for (const Point& point : curve.points) polyline.points.push_back(Placed(placement, point));
    if (!sweep) return polyline;
    std::vector<Point> between;
    for (std::size_t i = curve.closed ? 0 : 1; i < chords; ++i) {
        const double share = static_cast<double>(i) / static_cast<double>(chords);
        between.push_back(PointOf(sweep->At(share * sweep->radians)));
    }
    // Behind the start, where there is one.
    polyline.points.insert(polyline.points.begin() + (curve.closed ? 0 : 1), between.begin(),
                           between.end());
    return polyline;
}

}  // namespace ZVSmartModel
