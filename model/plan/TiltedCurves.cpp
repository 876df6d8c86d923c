#include "model/plan/TiltedCurves.h"

#include <cmath>
#include <numbers>

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

constexpr int piecesPerTurn = 72;

CZVIMPosition Moved(CZVIMPosition point, const CZVIMTransf& toModel) {
    return point.TransformBy(toModel);
}

CZVIMPolyline3D Moved(const CZVIMPolyline3D& polyline, const CZVIMTransf& toModel) {
    CZVIMPolyline3D moved;
    for (unsigned int i = 0; i < polyline.CountOfPoint(); ++i) {
        moved.AddPoint(Moved(polyline.GetPointAt(i), toModel));
    }
    moved.SetClosedFlag(polyline.GetClosedFlag());
    return moved;
}

/// An arc in its own coordinates, cut into pieces; they chain like the arc itself.
void AddPieces(const CZVIMBoundArc& arc, const CZVIMTransf& toModel, SZVLGZvgGeo& curves) {
    constexpr double turn = 2 * std::numbers::pi;
    const double sweep = arc.getSubtend();
    if (!(std::fabs(sweep) <= turn)) return;
    const int count = 1 + static_cast<int>(std::fabs(sweep) / turn * piecesPerTurn);
    CZVIMPosition from = arc.getStartpt();
    for (int i = 1; i <= count; ++i) {
        CZVIMVector radius = arc.getStartpt() - arc.getCenter();
        radius.RotateByAxis(sweep * i / count, arc.getNormal());
        const CZVIMPosition to = i < count ? arc.getCenter() + radius : arc.getEndpt();
        curves.lineSegments.emplace_back(Moved(from, toModel), Moved(to, toModel));
        from = to;
    }
}

CZVIMPolyline3D RingOf(const CZVIMCircle& circle, const CZVIMTransf& toModel) {
    CZVIMVector normal = circle.getNormal();
    normal.normalise();
    const CZVIMVector aside =
        std::fabs(normal.GetX()) < 0.5 ? CZVIMVector(1, 0, 0) : CZVIMVector(0, 1, 0);
    CZVIMVector first = normal.CrossProduct(aside);
    first = first.normalise() * circle.getRadius();
    CZVIMPolyline3D ring;
    for (int i = 0; i < piecesPerTurn; ++i) {
        CZVIMVector radius = first;
        radius.RotateByAxis(2 * std::numbers::pi * i / piecesPerTurn, normal);
        ring.AddPoint(Moved(circle.getCenter() + radius, toModel));
    }
    ring.SetClosedFlag();
    return ring;
}

}  // namespace

bool KeepsUpright(const CZVIMTransf& toModel) {
    constexpr double tolerance = 1e-9;
    return std::fabs(toModel.GetAt(0, 2)) <= tolerance &&
           std::fabs(toModel.GetAt(1, 2)) <= tolerance;
}

SZVLGZvgGeo CurvesInModel(const SZVLGZvgGeo& record, const CZVIMTransf& toModel) {
    SZVLGZvgGeo curves;
    for (const CZVIMPolyline3D& polyline : record.polylines) {
        curves.polylines.push_back(Moved(polyline, toModel));
    }
    for (const CZVIMLineSegment& segment : record.lineSegments) {
        curves.lineSegments.emplace_back(Moved(segment.getStartpt(), toModel),
                                         Moved(segment.getEndpt(), toModel));
    }
    for (const CZVIMBoundArc& arc : record.boundArcs) AddPieces(arc, toModel, curves);
    for (const CZVIMCircle& circle : record.circles) {
        curves.polylines.push_back(RingOf(circle, toModel));
    }
    return curves;
}

}  // namespace ZVSmartModel
