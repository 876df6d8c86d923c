// Serial forms:
//
//   line segment  start, end
//   bound arc     center, normal, start, end, f64 subtend
//   circle        center, normal, f64 radius
//   polyline 3D   u8 closed, u32 n, n positions
//   polyline      u8 closed, u32 n, n × (position, f64 bulge)
//
// where positions and vectors are three f64 each.

#include "ZVIM/Curve.h"

#include "siblings/geomodel/Bulk.h"

namespace ZVIM::GeometryPrimitiveResource {

static_assert(sizeof(CZVIMLineSegment) == 6 * sizeof(double));
static_assert(sizeof(CZVIMBoundArc) == 13 * sizeof(double));
static_assert(sizeof(CZVIMCircle) == 7 * sizeof(double));

void CZVIMLineSegment::WriteSerial(CZVFTSerialWriter* writer, unsigned int) const {
    WriteDoubles(writer, *this);
}

void CZVIMLineSegment::ReadSerial(CZVFTSerialReader* reader, unsigned int) {
    ReadDoubles(reader, *this);
}

CZVIMBoundArc::CZVIMBoundArc(const CZVIMPosition& centerPoint, const CZVIMVector& normalVector,
                             const CZVIMPosition& startPoint, double subtendRadians)
    : CZVIMBoundArc(centerPoint, normalVector, startPoint, startPoint, subtendRadians) {
    CZVIMVector spoke = start - center;
    end = center + spoke.RotateByAxis(subtend, normal);
}

CZVIMBoundArc::CZVIMBoundArc(const CZVIMPosition& centerPoint, const CZVIMVector& normalVector,
                             const CZVIMPosition& startPoint, const CZVIMPosition& endPoint,
                             double subtendRadians)
    : center(centerPoint),
      normal(normalVector),
      start(startPoint),
      end(endPoint),
      subtend(subtendRadians) {}

void CZVIMBoundArc::WriteSerial(CZVFTSerialWriter* writer, unsigned int) const {
    WriteDoubles(writer, *this);
}

void CZVIMBoundArc::ReadSerial(CZVFTSerialReader* reader, unsigned int) {
    ReadDoubles(reader, *this);
}

void CZVIMCircle::WriteSerial(CZVFTSerialWriter* writer, unsigned int) const {
    WriteDoubles(writer, *this);
}

void CZVIMCircle::ReadSerial(CZVFTSerialReader* reader, unsigned int) {
    ReadDoubles(reader, *this);
}

CZVIMPosition CZVIMPolyline3D::GetPointAt(unsigned int index) const {
    return index < points.size() ? points[index] : CZVIMPosition();
}

void CZVIMPolyline3D::Clearup() {
    points.clear();
    closed = false;
}

void CZVIMPolyline3D::WriteSerial(CZVFTSerialWriter* writer, unsigned int) const {
    writer->WriteU8(closed ? 1 : 0);
    WritePositions(writer, points);
}

void CZVIMPolyline3D::ReadSerial(CZVFTSerialReader* reader, unsigned int) {
    closed = reader->ReadU8() != 0;
    ReadPositions(reader, points);
}

CZVIMPosition CZVIMPolyline::GetPointAt(unsigned int index) const {
    return index < vertices.size() ? vertices[index].point : CZVIMPosition();
}

double CZVIMPolyline::GetBulgeAt(unsigned int index) const {
    return index < vertices.size() ? vertices[index].bulge : 0;
}

void CZVIMPolyline::Clearup() {
    vertices.clear();
    closed = false;
}

void CZVIMPolyline::WriteSerial(CZVFTSerialWriter* writer, unsigned int) const {
    static_assert(sizeof(Vertex) == 4 * sizeof(double));
    writer->WriteU8(closed ? 1 : 0);
    WriteDoublesList(writer, vertices);
}

void CZVIMPolyline::ReadSerial(CZVFTSerialReader* reader, unsigned int) {
    closed = reader->ReadU8() != 0;
    ReadDoublesList(reader, vertices);
}

}  // namespace ZVIM::GeometryPrimitiveResource
