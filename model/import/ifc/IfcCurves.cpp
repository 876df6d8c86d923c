#include "model/import/ifc/IfcCurves.h"

#include <ifcpp/IFC4/include/IfcArcIndex.h>
#include <ifcpp/IFC4/include/IfcAxis2Placement.h>
#include <ifcpp/IFC4/include/IfcBoolean.h>
#include <ifcpp/IFC4/include/IfcCartesianPoint.h>
#include <ifcpp/IFC4/include/IfcCartesianPointList2D.h>
#include <ifcpp/IFC4/include/IfcCartesianPointList3D.h>
#include <ifcpp/IFC4/include/IfcCircle.h>
#include <ifcpp/IFC4/include/IfcCompositeCurve.h>
#include <ifcpp/IFC4/include/IfcCompositeCurveSegment.h>
#include <ifcpp/IFC4/include/IfcDirection.h>
#include <ifcpp/IFC4/include/IfcEllipse.h>
#include <ifcpp/IFC4/include/IfcIndexedPolyCurve.h>
#include <ifcpp/IFC4/include/IfcLengthMeasure.h>
#include <ifcpp/IFC4/include/IfcLine.h>
#include <ifcpp/IFC4/include/IfcLineIndex.h>
#include <ifcpp/IFC4/include/IfcParameterValue.h>
#include <ifcpp/IFC4/include/IfcPolyline.h>
#include <ifcpp/IFC4/include/IfcPositiveLengthMeasure.h>
#include <ifcpp/IFC4/include/IfcTrimmedCurve.h>
#include <ifcpp/IFC4/include/IfcTrimmingPreference.h>
#include <ifcpp/IFC4/include/IfcVector.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>

#include "model/import/ifc/IfcFrames.h"

namespace ZVSmartModel {

namespace {

constexpr double turn = 2 * std::numbers::pi;

/// Composite curves of composite curves end here: files may nest in circles.
constexpr int deepestComposite = 8;

/// Straight pieces for a full ellipse.
constexpr int piecesPerTurn = 72;

/// Where a curve is cut: a point, a parameter or both.
struct Trim {
    std::shared_ptr<IfcCartesianPoint> point;
    std::optional<double> parameter;
};

Trim TrimOf(const std::vector<std::shared_ptr<IfcTrimmingSelect>>& selects,
            const std::shared_ptr<IfcTrimmingPreference>& preference) {
    Trim trim;
    for (const auto& select : selects) {
        if (const auto point = std::dynamic_pointer_cast<IfcCartesianPoint>(select)) {
            trim.point = point;
        } else if (const auto value = std::dynamic_pointer_cast<IfcParameterValue>(select)) {
            trim.parameter = value->m_value;
        }
    }
    const bool byPoint = preference && preference->m_enum == IfcTrimmingPreference::ENUM_CARTESIAN;
    if (trim.point && byPoint) trim.parameter.reset();
    return trim;
}

double LengthOr0(const std::shared_ptr<IfcPositiveLengthMeasure>& length) {
    return length ? length->m_value : 0;
}

/// From `from` on in the sense of `forward`, more than 0 and at most a turn.
double Sweep(double from, double to, bool forward) {
    double sweep = std::fmod(forward ? to - from : from - to, turn);
    if (sweep <= 1e-12) sweep += turn;
    return forward ? sweep : -sweep;
}

template <typename List>
std::vector<ModelPoint> ListPoints(const List& list) {
    std::vector<ModelPoint> points;
    for (const auto& row : list.m_CoordList) {
        double values[3] = {0, 0, 0};
        for (std::size_t i = 0; i < row.size() && i < 3; ++i) {
            if (row[i]) values[i] = row[i]->m_value;
        }
        points.push_back({values[0], values[1], values[2]});
    }
    return points;
}

std::vector<ModelPoint> ListPoints(const std::shared_ptr<IfcCartesianPointList>& list) {
    if (const auto flat = std::dynamic_pointer_cast<IfcCartesianPointList2D>(list)) {
        return ListPoints(*flat);
    }
    const auto solid = std::dynamic_pointer_cast<IfcCartesianPointList3D>(list);
    return solid ? ListPoints(*solid) : std::vector<ModelPoint>();
}

/// The points that a piece of an indexed curve names, counted from 1; none where one is missing.
template <typename Index>
std::vector<ModelPoint> Named(const Index& index, const std::vector<ModelPoint>& points) {
    std::vector<ModelPoint> named;
    for (const auto& number : index.m_vec) {
        const bool there =
            number.m_value > 0 && static_cast<std::size_t>(number.m_value) <= points.size();
        if (!there) return {};
        named.push_back(points[static_cast<std::size_t>(number.m_value) - 1]);
    }
    return named;
}

}  // namespace

bool IfcCurveMaker::Conic::IsRound() const {
    const double size = Length(u);
    return std::fabs(size - Length(v)) <= 1e-6 * size && std::fabs(Dot(u, v)) <= 1e-6 * size * size;
}

ModelPoint IfcCurveMaker::Conic::At(double t) const {
    return Sum(center, Sum(Scaled(u, std::cos(t)), Scaled(v, std::sin(t))));
}

ModelPoint IfcCurveMaker::Conic::Normal() const {
    const ModelPoint normal = Cross(u, v);
    return Scaled(normal, 1 / Length(normal));
}

double IfcCurveMaker::Conic::AngleOf(const ModelPoint& point) const {
    const ModelPoint way = Sum(point, Scaled(center, -1));
    return std::atan2(Dot(way, v) / Dot(v, v), Dot(way, u) / Dot(u, u));
}

bool IfcCurveMaker::AddWhole(const std::shared_ptr<IfcCurve>& curve, ModelCurves& curves) const {
    if (const auto polyline = std::dynamic_pointer_cast<IfcPolyline>(curve)) {
        ModelPolyline whole = {PointsOf(*polyline), false};
        if (whole.points.size() == 2) {
            AddChain(std::move(whole.points), false, curves);
            return true;
        }
        whole.closed = whole.points.size() > 3 && whole.points.front() == whole.points.back();
        if (whole.closed) whole.points.pop_back();
        curves.polylines.push_back(std::move(whole));
        return true;
    }
    Conic conic;
    if (!ConicOf(curve, conic)) return false;
    if (conic.IsRound()) {
        curves.circles.push_back({conic.center, conic.Normal(), Length(conic.u)});
        return true;
    }
    ModelPolyline ring = {{}, true};
    for (int i = 0; i < piecesPerTurn; ++i)
        ring.points.push_back(conic.At(turn * i / piecesPerTurn));
    curves.polylines.push_back(std::move(ring));
    return true;
}

void IfcCurveMaker::AddPieces(const std::shared_ptr<IfcCurve>& curve, ModelCurves& curves) const {
    AddPieces(curve, false, 0, curves);
}

// Composite curves nest to `deepestComposite`.
// NOLINTNEXTLINE(misc-no-recursion)
void IfcCurveMaker::AddPieces(const std::shared_ptr<IfcCurve>& curve, bool reversed, int depth,
                              ModelCurves& curves) const {
    Conic conic;
    if (const auto composite = std::dynamic_pointer_cast<IfcCompositeCurve>(curve)) {
        if (depth < deepestComposite) AddComposite(*composite, reversed, depth + 1, curves);
    } else if (const auto trimmed = std::dynamic_pointer_cast<IfcTrimmedCurve>(curve)) {
        AddTrimmed(*trimmed, reversed, curves);
    } else if (const auto indexed = std::dynamic_pointer_cast<IfcIndexedPolyCurve>(curve)) {
        AddIndexed(*indexed, reversed, curves);
    } else if (const auto polyline = std::dynamic_pointer_cast<IfcPolyline>(curve)) {
        AddChain(PointsOf(*polyline), reversed, curves);
    } else if (ConicOf(curve, conic)) {
        AddArc(conic, 0, turn / 2, curves);
        AddArc(conic, turn / 2, turn / 2, curves);
    }
}

// NOLINTNEXTLINE(misc-no-recursion)
void IfcCurveMaker::AddComposite(const IfcCompositeCurve& composite, bool reversed, int depth,
                                 ModelCurves& curves) const {
    for (const auto& segment : composite.m_Segments) {
        if (!segment) continue;
        const bool against = segment->m_SameSense && !segment->m_SameSense->m_value;
        AddPieces(segment->m_ParentCurve, reversed != against, depth, curves);
    }
}

void IfcCurveMaker::AddTrimmed(const IfcTrimmedCurve& trimmed, bool reversed,
                               ModelCurves& curves) const {
    const Trim first = TrimOf(trimmed.m_Trim1, trimmed.m_MasterRepresentation);
    const Trim second = TrimOf(trimmed.m_Trim2, trimmed.m_MasterRepresentation);
    Conic conic;
    if (ConicOf(trimmed.m_BasisCurve, conic)) {
        const auto angle = [&](const Trim& trim) {
            if (trim.parameter) return *trim.parameter * units.radians;
            return conic.AngleOf(InElement(PointOf(trim.point)));
        };
        const bool forward = !trimmed.m_SenseAgreement || trimmed.m_SenseAgreement->m_value;
        const double from = angle(first);
        const double sweep = Sweep(from, angle(second), forward);
        AddArc(conic, reversed ? from + sweep : from, reversed ? -sweep : sweep, curves);
        return;
    }
    const auto line = std::dynamic_pointer_cast<IfcLine>(trimmed.m_BasisCurve);
    if (!line || !line->m_Dir) return;
    const ModelPoint direction = DirectionOf(line->m_Dir->m_Orientation, {1, 0, 0});
    const double magnitude = line->m_Dir->m_Magnitude ? line->m_Dir->m_Magnitude->m_value : 1;
    const double size = Length(direction);
    const auto end = [&](const Trim& trim) {
        if (!trim.parameter) return InElement(PointOf(trim.point));
        const double way = size > 0 ? *trim.parameter * magnitude / size : 0;
        return InElement(Sum(PointOf(line->m_Pnt), Scaled(direction, way)));
    };
    AddChain({end(first), end(second)}, reversed, curves);
}

void IfcCurveMaker::AddIndexed(const IfcIndexedPolyCurve& indexed, bool reversed,
                               ModelCurves& curves) const {
    std::vector<ModelPoint> points = ListPoints(indexed.m_Points);
    for (ModelPoint& point : points) point = InElement(point);
    if (indexed.m_Segments.empty()) AddChain(points, reversed, curves);
    for (const auto& segment : indexed.m_Segments) {
        if (const auto line = std::dynamic_pointer_cast<IfcLineIndex>(segment)) {
            AddChain(Named(*line, points), reversed, curves);
        } else if (const auto arc = std::dynamic_pointer_cast<IfcArcIndex>(segment)) {
            const std::vector<ModelPoint> three = Named(*arc, points);
            if (three.size() == 3) AddArcThrough(three[0], three[1], three[2], reversed, curves);
        }
    }
}

void IfcCurveMaker::AddArc(const Conic& conic, double from, double sweep,
                           ModelCurves& curves) const {
    if (!(std::fabs(sweep) <= turn * 1.001)) return;
    if (!conic.IsRound()) {
        const int count = 1 + static_cast<int>(std::fabs(sweep) / turn * piecesPerTurn);
        std::vector<ModelPoint> points;
        for (int i = 0; i <= count; ++i) points.push_back(conic.At(from + sweep * i / count));
        AddChain(std::move(points), false, curves);
        return;
    }
    const ModelPoint normal = sweep < 0 ? Scaled(conic.Normal(), -1) : conic.Normal();
    curves.arcs.push_back(
        {conic.center, normal, conic.At(from), conic.At(from + sweep), std::fabs(sweep)});
}

void IfcCurveMaker::AddChain(std::vector<ModelPoint> points, bool reversed, ModelCurves& curves) {
    if (reversed) std::reverse(points.begin(), points.end());
    for (std::size_t i = 1; i < points.size(); ++i) {
        curves.segments.push_back({points[i - 1], points[i]});
    }
}

/// The circle through three points: its center is where the perpendicular bisectors meet (the
/// circumcenter in terms of cross products).
void IfcCurveMaker::AddArcThrough(const ModelPoint& from, const ModelPoint& over,
                                  const ModelPoint& to, bool reversed, ModelCurves& curves) {
    const ModelPoint a = Sum(over, Scaled(from, -1));
    const ModelPoint b = Sum(to, Scaled(from, -1));
    const ModelPoint across = Cross(a, b);
    const double size = Dot(across, across);
    if (!(size > 1e-18)) {
        AddChain({from, over, to}, reversed, curves);
        return;
    }
    const ModelPoint toCenter =
        Scaled(Sum(Scaled(Cross(across, a), Dot(b, b)), Scaled(Cross(b, across), Dot(a, a))),
               1 / (2 * size));
    const ModelPoint normal = Scaled(across, 1 / std::sqrt(size));
    const Conic circle = {Sum(from, toCenter), Scaled(toCenter, -1),
                          Cross(normal, Scaled(toCenter, -1))};
    const double sweep = Sweep(0, circle.AngleOf(to), true);
    curves.arcs.push_back({circle.center, reversed ? Scaled(normal, -1) : normal,
                           reversed ? to : from, reversed ? from : to, sweep});
}

bool IfcCurveMaker::ConicOf(const std::shared_ptr<IfcCurve>& curve, Conic& conic) const {
    double u = 0, v = 0;
    if (const auto circle = std::dynamic_pointer_cast<IfcCircle>(curve)) {
        u = v = LengthOr0(circle->m_Radius);
    } else if (const auto ellipse = std::dynamic_pointer_cast<IfcEllipse>(curve)) {
        u = LengthOr0(ellipse->m_SemiAxis1);
        v = LengthOr0(ellipse->m_SemiAxis2);
    }
    if (!(u > 0) || !(v > 0)) return false;
    const auto section = std::dynamic_pointer_cast<IfcConic>(curve);
    const Transform frame = Combined(toElement, FrameOf(section->m_Position));
    const ModelPoint center = {frame[3], frame[7], frame[11]};
    conic = {Scaled(center, units.metres), Scaled({frame[0], frame[4], frame[8]}, u * units.metres),
             Scaled({frame[1], frame[5], frame[9]}, v * units.metres)};
    return true;
}

std::vector<ModelPoint> IfcCurveMaker::PointsOf(const IfcPolyline& polyline) const {
    std::vector<ModelPoint> points;
    for (const auto& point : polyline.m_Points) points.push_back(InElement(PointOf(point)));
    return points;
}

ModelPoint IfcCurveMaker::InElement(const ModelPoint& point) const {
    return Scaled(Moved(toElement, point), units.metres);
}

}  // namespace ZVSmartModel
