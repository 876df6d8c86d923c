#include "model/element/GeoExtent.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "model/element/Sweep.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

void AddToBox(GeoExtent& extent, double x, double y, double z) {
    if (!std::isfinite(x) || !std::isfinite(y) || !std::isfinite(z)) return;
    const double values[3] = {x, y, z};
    for (int axis = 0; axis < 3; ++axis) {
        extent.low[axis] = std::min(extent.low[axis], values[axis]);
        extent.high[axis] = std::max(extent.high[axis], values[axis]);
    }
}

void AddToBox(GeoExtent& extent, const CZVIMPosition& point) {
    AddToBox(extent, point.GetX(), point.GetY(), point.GetZ());
}

void AddPoint(GeoExtent& extent, const CZVIMPosition& point) {
    ++extent.points;
    AddToBox(extent, point);
}

void AddPoints(GeoExtent& extent, const std::vector<CZVIMPosition>& points) {
    for (const CZVIMPosition& point : points) AddPoint(extent, point);
}

unsigned long long CountFaces(const std::vector<int>& facesIndex) {
    unsigned long long faces = 0;
    std::size_t at = 0;
    while (at < facesIndex.size()) {
        const std::size_t left = facesIndex.size() - at - 1;
        const int vertices = facesIndex[at];
        if (vertices < 0 || static_cast<std::size_t>(vertices) > left) break;
        at += static_cast<std::size_t>(vertices) + 1;
        ++faces;
    }
    return faces;
}

unsigned long long CountCells(const CZVIMMesh& mesh) {
    if (mesh.GetRow() < 2 || mesh.GetColumn() < 2) return 0;
    const auto rows = static_cast<unsigned long long>(mesh.GetRow());
    const auto columns = static_cast<unsigned long long>(mesh.GetColumn());
    return rows * columns == mesh.GetPoints().size() ? (rows - 1) * (columns - 1) : 0;
}

/// Along one axis a circle is farthest from the center at t = atan2(v, u) and half a turn later;
/// those within the sweep extend the box.
void AddSweep(GeoExtent& extent, const Sweep& sweep) {
    constexpr double turn = 2 * std::numbers::pi;
    if (!std::isfinite(sweep.radians)) return;
    const CZVIMVector &u = sweep.u, &v = sweep.v;
    const double peaks[3] = {std::atan2(v.GetX(), u.GetX()), std::atan2(v.GetY(), u.GetY()),
                             std::atan2(v.GetZ(), u.GetZ())};
    for (const double peak : peaks) {
        for (const double angle : {peak, peak + std::numbers::pi}) {
            double fromStart = std::fmod(sweep.radians < 0 ? -angle : angle, turn);
            if (fromStart < 0) fromStart += turn;
            if (fromStart <= std::fabs(sweep.radians)) AddToBox(extent, sweep.At(angle));
        }
    }
}

void AddArc(GeoExtent& extent, const CZVIMBoundArc& arc) {
    AddPoint(extent, arc.getStartpt());
    AddPoint(extent, arc.getEndpt());
    AddSweep(extent, SweepOf(arc));
}

void AddSurfaces(GeoExtent& extent, const SZVLGZvgGeo& geo) {
    for (const CZVIMShell& shell : geo.shells) {
        AddPoints(extent, shell.GetPoints());
        extent.faces += CountFaces(shell.GetFacesIndex());
    }
    for (const CZVIMVisualShell& visual : geo.visualShells) {
        AddPoints(extent, visual.shell.GetPoints());
        extent.faces += CountFaces(visual.shell.GetFacesIndex());
    }
    for (const CZVIMVisualPolyFaceMesh& mesh : geo.polyFaceMeshes) {
        AddPoints(extent, mesh.points);
        extent.faces += CountFaces(mesh.facesIndex);
    }
    for (const CZVIMMesh& mesh : geo.meshes) {
        AddPoints(extent, mesh.GetPoints());
        extent.faces += CountCells(mesh);
    }
    for (const SZVLGZvgGeoRenderMesh& mesh : geo.renderMeshes) AddPoints(extent, mesh.points);
}

void AddCurves(GeoExtent& extent, const SZVLGZvgGeo& geo) {
    for (const CZVIMLineSegment& segment : geo.lineSegments) {
        AddPoint(extent, segment.getStartpt());
        AddPoint(extent, segment.getEndpt());
    }
    for (const CZVIMBoundArc& arc : geo.boundArcs) AddArc(extent, arc);
    for (const CZVIMCircle& circle : geo.circles) AddSweep(extent, SweepOf(circle));
    for (const CZVIMPolyline3D& polyline : geo.polylines) {
        for (unsigned int i = 0; i < polyline.CountOfPoint(); ++i) {
            AddPoint(extent, polyline.GetPointAt(i));
        }
    }
    for (const SZVLGZvgGeoPointList& list : geo.pointLists) AddPoints(extent, list.points);
}

}  // namespace

void GeoExtent::Add(const GeoExtent& other) {
    points += other.points;
    faces += other.faces;
    for (int axis = 0; axis < 3; ++axis) {
        low[axis] = std::min(low[axis], other.low[axis]);
        high[axis] = std::max(high[axis], other.high[axis]);
    }
}

GeoExtent MeasureGeo(const SZVLGZvgGeo& geo) {
    GeoExtent extent;
    AddSurfaces(extent, geo);
    AddCurves(extent, geo);
    return extent;
}

}  // namespace ZVSmartModel
