#pragma once

#include <vector>

#include "ZVSmartFormat/Api.h"
#include "ZVSmartSerial/Serial.h"

namespace ZVIM::GeometryPrimitiveResource {

/// A direction with a length, in the model's unit. Three doubles and nothing else.
class ZVFT_API CZVIMVector {
  public:
    /// The vector of no length.
    CZVIMVector() = default;
    /// A vector by its components; any numbers are accepted.
    CZVIMVector(double xLength, double yLength, double zLength)
        : x(xLength), y(yLength), z(zLength) {}

    /// The coordinates.
    /// @{
    double GetX() const { return x; }
    double GetY() const { return y; }
    double GetZ() const { return z; }
    void SetX(double value) { x = value; }
    void SetY(double value) { y = value; }
    void SetZ(double value) { z = value; }
    /// @}

    /// Neither overflows nor underflows on the way. NaN where a component is NaN.
    double len() const;
    /// Scales to length 1 in place and returns this. A vector without a direction (zero, or with
    /// a component that is not finite) stays as it is.
    CZVIMVector& normalise();
    /// Turns in place by the right-hand rule about `axis`, which may have any length, and returns
    /// this. Stays as it is where the axis has no direction. Rodrigues' rotation formula.
    CZVIMVector& RotateByAxis(double angleRadians, const CZVIMVector& axis);

    /// this · other.
    double DotProduct(const CZVIMVector& other) const;
    /// this × other.
    CZVIMVector CrossProduct(const CZVIMVector& other) const;

    /// The vector turned round.
    CZVIMVector operator-() const { return CZVIMVector(-x, -y, -z); }

    /// f64 x, y, z. Every version is written as version 1.
    void WriteSerial(ZVSmartSerial::CZVFTSerialWriter* writer, unsigned int version) const;
    /// The mirror of WriteSerial; every version reads as version 1.
    void ReadSerial(ZVSmartSerial::CZVFTSerialReader* reader, unsigned int version);

  private:
    double x = 0;
    double y = 0;
    double z = 0;
};

/// Component by component.
/// @{
ZVFT_API CZVIMVector operator+(const CZVIMVector& a, const CZVIMVector& b);
ZVFT_API CZVIMVector operator-(const CZVIMVector& a, const CZVIMVector& b);
ZVFT_API CZVIMVector operator*(const CZVIMVector& vector, double factor);
ZVFT_API CZVIMVector operator*(double factor, const CZVIMVector& vector);
/// @}

/// Exact, component by component; the order of positions is the tolerant one.
ZVFT_API bool operator==(const CZVIMVector& a, const CZVIMVector& b);
/// The opposite of ==.
ZVFT_API bool operator!=(const CZVIMVector& a, const CZVIMVector& b);

/// Whether the angle between the two is within `toleranceRadians` of π. False where either has no
/// direction (zero, or a component that is not finite).
ZVFT_API bool antiparallel(const CZVIMVector& a, const CZVIMVector& b, double toleranceRadians);

/// A u32 count, then the vectors, in bulk. Throws CZVFTStreamException "encode error" where the
/// count exceeds 32 bits.
ZVFT_API void WriteVectors(ZVSmartSerial::CZVFTSerialWriter* writer,
                           const std::vector<CZVIMVector>& vectors);
/// Replaces the list by a stored one. A count that cannot fit the bytes left throws
/// CZVFTStreamException "seek over buffer size" before anything is sized, so untrusted bytes are
/// safe; the list then stays as it was.
ZVFT_API void ReadVectors(ZVSmartSerial::CZVFTSerialReader* reader,
                          std::vector<CZVIMVector>& vectors);

}  // namespace ZVIM::GeometryPrimitiveResource
