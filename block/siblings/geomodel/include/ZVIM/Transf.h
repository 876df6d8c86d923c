#pragma once

#include "ZVIM/Position.h"
#include "ZVIM/Vector.h"
#include "ZVSmartFormat/Api.h"
#include "ZVSmartSerial/Serial.h"

namespace ZVIM::GeometryPrimitiveResource {

/// An affine transform of 3 rows and 4 columns: row r holds coordinate r of the images of the
/// X axis, the Y axis, the Z axis and the origin, so a point (x, y, z) goes to the product with
/// (x, y, z, 1). The identity by default.
class ZVFT_API CZVIMTransf {
  public:
    CZVIMTransf() = default;

    /// 0 outside rows 0 to 2 and columns 0 to 3.
    double GetAt(int row, int column) const {
        return IsInside(row, column) ? values[row * 4 + column] : 0;
    }
    /// Does nothing outside rows 0 to 2 and columns 0 to 3.
    void SetAt(int row, int column, double value);

    /// Whether this is exactly the identity.
    bool identity() const;
    /// What undoes this transform: the adjugate of the 3 × 3 part over its determinant. The
    /// identity where there is none (the determinant is zero, or no double can hold it) or where
    /// a number of it would not be finite.
    CZVIMTransf inverse() const;

    /// 12 f64, row by row. Every version is written as version 1.
    void WriteSerial(ZVSmartSerial::CZVFTSerialWriter* writer, unsigned int version) const;
    /// The mirror of WriteSerial; every version reads as version 1. Any numbers are accepted.
    void ReadSerial(ZVSmartSerial::CZVFTSerialReader* reader, unsigned int version);

  private:
    static bool IsInside(int row, int column) {
        return row >= 0 && row < 3 && column >= 0 && column < 4;
    }

    double values[12] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};
};

/// The transform that applies `b` first, then `a`.
ZVFT_API CZVIMTransf operator*(const CZVIMTransf& a, const CZVIMTransf& b);

/// Exact, number by number.
ZVFT_API bool operator==(const CZVIMTransf& a, const CZVIMTransf& b);
/// The opposite of ==.
ZVFT_API bool operator!=(const CZVIMTransf& a, const CZVIMTransf& b);

/// The transform from a local frame to the world: orthonormal and right-handed, its origin at
/// `origin`, its X axis along `xDirection`, its Z axis along xDirection × yDirection. The
/// directions need be neither unit nor perpendicular (Gram–Schmidt, applied twice, which keeps
/// nearly parallel directions orthogonal to rounding). Where they span no plane (zero, parallel
/// to within 1e-13 radians, not finite) only the origin is moved.
ZVFT_API CZVIMTransf coordinate_transf(const CZVIMPosition& origin, const CZVIMVector& xDirection,
                                       const CZVIMVector& yDirection);

}  // namespace ZVIM::GeometryPrimitiveResource
