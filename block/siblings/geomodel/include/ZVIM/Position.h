#pragma once

#include <vector>

#include "ZVIM/Vector.h"
#include "ZVSmartFormat/Api.h"
#include "ZVSmartSerial/Serial.h"

namespace ZVIM::GeometryPrimitiveResource {

class CZVIMTransf;

/// A point in space, in the model's unit. Three doubles and nothing else.
class ZVFT_API CZVIMPosition {
  public:
    /// The origin.
    CZVIMPosition() = default;
    /// A point by its coordinates; any numbers are accepted.
    CZVIMPosition(double xValue, double yValue, double zValue) : x(xValue), y(yValue), z(zValue) {}

    /// The coordinates.
    /// @{
    double GetX() const { return x; }
    double GetY() const { return y; }
    double GetZ() const { return z; }
    void SetX(double value) { x = value; }
    void SetY(double value) { y = value; }
    void SetZ(double value) { z = value; }
    /// @}

    /// The distance between the two points, in the model's unit.
    double DistToPt(const CZVIMPosition& other) const;
    /// Moves in place to where the transform puts it, and returns this.
    CZVIMPosition& TransformBy(const CZVIMTransf& transf);

    /// f64 x, y, z. Every version is written as version 1.
    void WriteSerial(ZVSmartSerial::CZVFTSerialWriter* writer, unsigned int version) const;
    /// The mirror of WriteSerial; every version reads as version 1.
    void ReadSerial(ZVSmartSerial::CZVFTSerialReader* reader, unsigned int version);

  private:
    double x = 0;
    double y = 0;
    double z = 0;
};

/// Orders by X, then Y, then Z, each snapped to the nearest multiple of
/// `CZVIMGeoModelConfig::getabs()`, NaN after everything else: a strict weak order of all
/// positions, in which points that differ by rounding noise about a multiple are equal. Two
/// points on either side of the middle between two multiples differ, however close they are.
ZVFT_API bool operator<(const CZVIMPosition& a, const CZVIMPosition& b);
/// Neither is less than the other.
ZVFT_API bool operator==(const CZVIMPosition& a, const CZVIMPosition& b);
/// The opposite of ==.
ZVFT_API bool operator!=(const CZVIMPosition& a, const CZVIMPosition& b);

/// The vector from `from` to `to`.
ZVFT_API CZVIMVector operator-(const CZVIMPosition& to, const CZVIMPosition& from);
/// The position moved along the vector, or back.
/// @{
ZVFT_API CZVIMPosition operator+(const CZVIMPosition& position, const CZVIMVector& vector);
ZVFT_API CZVIMPosition operator-(const CZVIMPosition& position, const CZVIMVector& vector);
/// @}

/// A u32 count, then the positions, in bulk. Throws CZVFTStreamException "encode error" where the
/// count exceeds 32 bits.
ZVFT_API void WritePositions(ZVSmartSerial::CZVFTSerialWriter* writer,
                             const std::vector<CZVIMPosition>& positions);
/// Replaces the list by a stored one. A count that cannot fit the bytes left throws
/// CZVFTStreamException "seek over buffer size" before anything is sized, so untrusted bytes are
/// safe; the list then stays as it was.
ZVFT_API void ReadPositions(ZVSmartSerial::CZVFTSerialReader* reader,
                            std::vector<CZVIMPosition>& positions);

}  // namespace ZVIM::GeometryPrimitiveResource
