#pragma once

#include <vector>

#include "ZVIM/Position.h"
#include "ZVIM/Vector.h"
#include "ZVSmartFormat/Api.h"
#include "ZVSmartSerial/Serial.h"

// For every class here: lengths in the model's unit, angles in radians. WriteSerial writes every
// version as version 1, ReadSerial reads every version as version 1. Reading throws
// CZVFTStreamException "seek over buffer size" for a count that cannot fit the bytes left before
// anything is sized, so untrusted bytes are safe; the object is then partly read and usable.

namespace ZVIM::GeometryPrimitiveResource {

/// A straight piece between two points.
class ZVFT_API CZVIMLineSegment {
  public:
    /// From the origin to the origin.
    CZVIMLineSegment() = default;
    /// From one point to the other.
    CZVIMLineSegment(const CZVIMPosition& startPoint, const CZVIMPosition& endPoint)
        : start(startPoint), end(endPoint) {}

    /// The first point.
    const CZVIMPosition& getStartpt() const { return start; }
    /// The last point.
    const CZVIMPosition& getEndpt() const { return end; }

    /// start, end.
    void WriteSerial(ZVSmartSerial::CZVFTSerialWriter* writer, unsigned int version) const;
    /// The mirror of WriteSerial.
    void ReadSerial(ZVSmartSerial::CZVFTSerialReader* reader, unsigned int version);

  private:
    CZVIMPosition start;
    CZVIMPosition end;
};

/// A piece of a circle, from its start by the subtended angle about its normal (right hand).
class ZVFT_API CZVIMBoundArc {
  public:
    /// Nothing: all numbers 0.
    CZVIMBoundArc() = default;
    /// The end is the start turned about the axis through the center along `normal`, by Rodrigues'
    /// rotation formula; it is the start where the normal has no direction.
    CZVIMBoundArc(const CZVIMPosition& centerPoint, const CZVIMVector& normalVector,
                  const CZVIMPosition& startPoint, double subtendRadians);
    /// The end as given; nothing is checked.
    CZVIMBoundArc(const CZVIMPosition& centerPoint, const CZVIMVector& normalVector,
                  const CZVIMPosition& startPoint, const CZVIMPosition& endPoint,
                  double subtendRadians);

    /// The circle's center.
    const CZVIMPosition& getCenter() const { return center; }
    /// The axis about which the arc turns; of any length.
    const CZVIMVector& getNormal() const { return normal; }
    /// The first point.
    const CZVIMPosition& getStartpt() const { return start; }
    /// The last point.
    const CZVIMPosition& getEndpt() const { return end; }
    /// The swept angle in radians.
    double getSubtend() const { return subtend; }
    /// The distance from the center to the start.
    double getRadius() const { return center.DistToPt(start); }

    /// center, normal, start, end, f64 subtend.
    void WriteSerial(ZVSmartSerial::CZVFTSerialWriter* writer, unsigned int version) const;
    /// The mirror of WriteSerial.
    void ReadSerial(ZVSmartSerial::CZVFTSerialReader* reader, unsigned int version);

  private:
    CZVIMPosition center;
    CZVIMVector normal;
    CZVIMPosition start;
    CZVIMPosition end;
    double subtend = 0;
};

/// A full circle in the plane perpendicular to its normal.
class ZVFT_API CZVIMCircle {
  public:
    /// Nothing: all numbers 0.
    CZVIMCircle() = default;
    /// A circle by its numbers; nothing is checked.
    CZVIMCircle(const CZVIMPosition& centerPoint, const CZVIMVector& normalVector,
                double radiusLength)
        : center(centerPoint), normal(normalVector), radius(radiusLength) {}

    /// The center.
    const CZVIMPosition& getCenter() const { return center; }
    /// A vector perpendicular to the circle's plane; of any length.
    const CZVIMVector& getNormal() const { return normal; }
    /// The radius, in the model's unit.
    double getRadius() const { return radius; }

    /// center, normal, f64 radius.
    void WriteSerial(ZVSmartSerial::CZVFTSerialWriter* writer, unsigned int version) const;
    /// The mirror of WriteSerial.
    void ReadSerial(ZVSmartSerial::CZVFTSerialReader* reader, unsigned int version);

  private:
    CZVIMPosition center;
    CZVIMVector normal;
    double radius = 0;
};

/// A chain of straight pieces in space; where it is closed, the last point joins the first.
class ZVFT_API CZVIMPolyline3D {
  public:
    /// Appends a point.
    void AddPoint(const CZVIMPosition& point) { points.push_back(point); }
    /// The number of points.
    unsigned int CountOfPoint() const { return static_cast<unsigned int>(points.size()); }
    /// The origin where `index` is not below CountOfPoint().
    CZVIMPosition GetPointAt(unsigned int index) const;

    /// Whether the last point joins the first.
    /// @{
    bool GetClosedFlag() const { return closed; }
    void SetClosedFlag(bool isClosed = true) { closed = isClosed; }
    /// @}
    /// No points, not closed.
    void Clearup();

    /// u8 closed (0 or 1), u32 count, positions. Any u8 but 0 reads as closed.
    void WriteSerial(ZVSmartSerial::CZVFTSerialWriter* writer, unsigned int version) const;
    /// The mirror of WriteSerial.
    void ReadSerial(ZVSmartSerial::CZVFTSerialReader* reader, unsigned int version);

  private:
    std::vector<CZVIMPosition> points;
    bool closed = false;
};

/// A chain of straight pieces and arcs. A point's bulge shapes the piece that leaves it: the
/// tangent of a quarter of the swept angle, positive counter-clockwise, 0 for a straight piece.
class ZVFT_API CZVIMPolyline {
  public:
    /// Appends a point and the bulge of the piece that leaves it.
    void AddPoint(const CZVIMPosition& point, double bulge) { vertices.push_back({point, bulge}); }
    /// The number of points.
    unsigned int CountOfPoint() const { return static_cast<unsigned int>(vertices.size()); }
    /// The origin where `index` is not below CountOfPoint().
    CZVIMPosition GetPointAt(unsigned int index) const;
    /// 0 where `index` is not below CountOfPoint().
    double GetBulgeAt(unsigned int index) const;

    /// Whether the last point joins the first.
    /// @{
    bool GetClosedFlag() const { return closed; }
    void SetClosedFlag(bool isClosed = true) { closed = isClosed; }
    /// @}
    /// No points, not closed.
    void Clearup();

    /// u8 closed (0 or 1), u32 count, for each point its position and its f64 bulge. Any u8 but 0
    /// reads as closed.
    void WriteSerial(ZVSmartSerial::CZVFTSerialWriter* writer, unsigned int version) const;
    /// The mirror of WriteSerial.
    void ReadSerial(ZVSmartSerial::CZVFTSerialReader* reader, unsigned int version);

  private:
    struct Vertex {
        CZVIMPosition point;
        double bulge = 0;
    };

    std::vector<Vertex> vertices;
    bool closed = false;
};

}  // namespace ZVIM::GeometryPrimitiveResource
