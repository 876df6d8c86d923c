#include "model/pack/ShapeRecords.h"

#include <algorithm>
#include <utility>

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

constexpr u16 colourFlag = 0x10;
constexpr u16 oldAlphaFlag = 0x20;  // stores alpha in formats before 2, whose colour has none
constexpr u16 styleNameFlag = 0x80;

CZVIMShell ShellRecord(const ModelShell& shell) {
    CZVIMShell record;
    std::vector<CZVIMPosition> points;
    points.reserve(shell.points.size());
    for (const ModelPoint& point : shell.points) points.emplace_back(point.x, point.y, point.z);
    record.AddPts(points);
    std::vector<int> face(3);
    for (const auto& triangle : shell.triangles) {
        for (std::size_t i = 0; i < 3; ++i) face[i] = static_cast<int>(triangle[i]);
        record.AddFaceIndex(face);
    }
    return record;
}

CZVIMPosition Position(const ModelPoint& point) {
    return {point.x, point.y, point.z};
}

CZVIMVector Vector(const ModelPoint& direction) {
    return {direction.x, direction.y, direction.z};
}

SZVLGZvgGeo CurvesRecord(const ModelCurves& curves) {
    SZVLGZvgGeo record;
    for (const ModelPolyline& source : curves.polylines) {
        CZVIMPolyline3D& polyline = record.polylines.emplace_back();
        for (const ModelPoint& point : source.points) polyline.AddPoint(Position(point));
        polyline.SetClosedFlag(source.closed);
    }
    for (const ModelSegment& segment : curves.segments) {
        record.lineSegments.emplace_back(Position(segment.from), Position(segment.to));
    }
    for (const ModelArc& arc : curves.arcs) {
        record.boundArcs.emplace_back(Position(arc.center), Vector(arc.normal), Position(arc.from),
                                      Position(arc.to), arc.sweepRadians);
    }
    for (const ModelCircle& circle : curves.circles) {
        record.circles.emplace_back(Position(circle.center), Vector(circle.normal), circle.radius);
    }
    return record;
}

CZVIMTransf TransfRecord(const Transform& placement) {
    CZVIMTransf transf;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 4; ++column) {
            transf.SetAt(row, column, placement[static_cast<std::size_t>(row * 4 + column)]);
        }
    }
    return transf;
}

std::size_t TriangleCount(const ShapePart& part) {
    std::size_t count = 0;
    for (const ModelShell& shell : part.shells) count += shell.triangles.size();
    return count;
}

}  // namespace

SZVLGZvgDisplayAttr ColourAttr(const std::optional<Rgba>& colour, unsigned int version) {
    SZVLGZvgDisplayAttr attr;
    if (!colour) return attr;
    attr.flags = colourFlag;
    if (version < 2) attr.flags |= oldAlphaFlag;
    attr.red = colour->red;
    attr.green = colour->green;
    attr.blue = colour->blue;
    attr.alpha = colour->alpha;
    return attr;
}

SZVLGZvgGeo ShapeRecord(const ModelShape& shape, unsigned int version) {
    SZVLGZvgGeo record;
    for (const ShapePart& part : shape.parts) {
        std::vector<CZVIMShell> shells;
        for (const ModelShell& shell : part.shells) shells.push_back(ShellRecord(shell));
        if (!part.colour) {
            record.shells = std::move(shells);
            continue;
        }
        SZVLGZvgSubGeo& sub = record.subGeos.emplace_back();
        sub.attr = ColourAttr(part.colour, version);
        sub.attr.styleName = part.styleName;
        if (!part.styleName.empty()) sub.attr.flags |= styleNameFlag;
        sub.geo.shells = std::move(shells);
    }
    for (const ModelCurves& curves : shape.curves) {
        SZVLGZvgSubGeo& sub = record.subGeos.emplace_back();
        sub.attr.styleName = curves.name;
        if (!curves.name.empty()) sub.attr.flags |= styleNameFlag;
        sub.geo = CurvesRecord(curves);
    }
    return record;
}

ShapeSummary SummaryOf(const ModelShape& shape) {
    ShapeSummary summary;
    for (const ShapePart& part : shape.parts) {
        const std::size_t triangles = TriangleCount(part);
        if (!part.colour || (summary.colour && triangles <= summary.triangles)) continue;
        summary.colour = part.colour;
        summary.styleName = part.styleName;
        summary.triangles = triangles;
    }
    return summary;
}

SZVLGZvgGeo PlacementRecord(const ModelElement& element, const std::vector<ShapeSummary>& shapes) {
    SZVLGZvgGeo record;
    for (const PlacedShape& placed : element.shapes) {
        record.namedTransfs.push_back({shapes[placed.shape].key, TransfRecord(placed.placement)});
    }
    return record;
}

std::size_t ShapeRecordBytes(const ModelShape& shape) {
    std::size_t bytes = 16;
    for (const ShapePart& part : shape.parts) {
        bytes += 32;
        for (const ModelShell& shell : part.shells) {
            bytes += 8 + shell.points.size() * 24 + shell.triangles.size() * 16;
        }
    }
    for (const ModelCurves& curves : shape.curves) bytes += 40 + NumbersOf(curves).size() * 8;
    return bytes;
}

std::size_t PlacementRecordBytes(const ModelElement& element) {
    return 16 + element.shapes.size() * 160;
}

unsigned int GeosPerBlock(std::size_t recordBytes, std::size_t records) {
    constexpr std::size_t wantedBlockBytes = 256 << 10;
    if (records == 0) return 0;
    const std::size_t average = std::max<std::size_t>(recordBytes / records, 1);
    return static_cast<unsigned int>(std::max<std::size_t>(wantedBlockBytes / average, 1));
}

}  // namespace ZVSmartModel
