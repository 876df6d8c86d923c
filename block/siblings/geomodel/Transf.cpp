// Serial form of a transform: 12 f64, row by row:
//
//   Xx Yx Zx Ox
//   Xy Yy Zy Oy
//   Xz Yz Zz Oz
//
// where X, Y, Z are the images of the axes and O that of the origin.

#include "ZVIM/Transf.h"

#include <algorithm>
#include <cmath>

#include "siblings/geomodel/Bulk.h"

namespace ZVIM::GeometryPrimitiveResource {

static_assert(sizeof(CZVIMTransf) == 12 * sizeof(double));

namespace {

// The sine of the angle between two directions below which they span no plane: some hundred
// rounding errors.
constexpr double smallestSine = 1e-13;

CZVIMVector ColumnOf(const CZVIMTransf& transf, int column) {
    return CZVIMVector(transf.GetAt(0, column), transf.GetAt(1, column), transf.GetAt(2, column));
}

void SetRow(CZVIMTransf& transf, int row, const CZVIMVector& linear, double shift) {
    transf.SetAt(row, 0, linear.GetX());
    transf.SetAt(row, 1, linear.GetY());
    transf.SetAt(row, 2, linear.GetZ());
    transf.SetAt(row, 3, shift);
}

bool IsFinite(const CZVIMTransf& transf) {
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 4; ++column) {
            if (!std::isfinite(transf.GetAt(row, column))) return false;
        }
    }
    return true;
}

// The power of two that brings the largest number of the 3 × 3 part into [1, 2): scaling by it
// is exact and keeps the determinant of very small or large scales from under- or overflowing.
int ExponentOf(const CZVIMTransf& transf) {
    double largest = 0;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            largest = std::max(largest, std::fabs(transf.GetAt(row, column)));
        }
    }
    return largest > 0 ? std::ilogb(largest) : 0;
}

CZVIMVector Scaled(const CZVIMVector& v, int exponent) {
    return CZVIMVector(std::scalbn(v.GetX(), exponent), std::scalbn(v.GetY(), exponent),
                       std::scalbn(v.GetZ(), exponent));
}

CZVIMVector Divided(const CZVIMVector& v, double divisor) {
    return CZVIMVector(v.GetX() / divisor, v.GetY() / divisor, v.GetZ() / divisor);
}

// What is left of `v` without its part along `unit`, as a unit vector; zero where nothing is.
CZVIMVector UnitPerpendicular(const CZVIMVector& v, const CZVIMVector& unit) {
    CZVIMVector rest = v - unit * unit.DotProduct(v);
    if (!(rest.len() >= smallestSine)) return CZVIMVector();
    return rest.normalise();
}

}  // namespace

void CZVIMTransf::SetAt(int row, int column, double value) {
    if (IsInside(row, column)) values[row * 4 + column] = value;
}

bool CZVIMTransf::identity() const {
    return *this == CZVIMTransf();
}

CZVIMTransf CZVIMTransf::inverse() const {
    if (!IsFinite(*this)) return CZVIMTransf();
    const int exponent = ExponentOf(*this);
    const CZVIMVector xAxis = Scaled(ColumnOf(*this, 0), -exponent);
    const CZVIMVector yAxis = Scaled(ColumnOf(*this, 1), -exponent);
    const CZVIMVector zAxis = Scaled(ColumnOf(*this, 2), -exponent);
    const CZVIMVector origin = ColumnOf(*this, 3);
    const CZVIMVector yCrossZ = yAxis.CrossProduct(zAxis);
    const double determinant = xAxis.DotProduct(yCrossZ);
    if (determinant == 0) return CZVIMTransf();

    // The rows of the adjugate are the cross products of the columns.
    const CZVIMVector adjugate[3] = {yCrossZ, zAxis.CrossProduct(xAxis), xAxis.CrossProduct(yAxis)};
    CZVIMTransf result;
    for (int row = 0; row < 3; ++row) {
        const CZVIMVector linear = Scaled(Divided(adjugate[row], determinant), -exponent);
        SetRow(result, row, linear, 0 - linear.DotProduct(origin));  // no negative zeros
    }
    return IsFinite(result) ? result : CZVIMTransf();
}

void CZVIMTransf::WriteSerial(CZVFTSerialWriter* writer, unsigned int) const {
    WriteDoubles(writer, *this);
}

void CZVIMTransf::ReadSerial(CZVFTSerialReader* reader, unsigned int) {
    ReadDoubles(reader, *this);
}

CZVIMTransf operator*(const CZVIMTransf& a, const CZVIMTransf& b) {
    CZVIMTransf product;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 4; ++column) {
            double sum = column == 3 ? a.GetAt(row, 3) : 0;
            for (int i = 0; i < 3; ++i) sum += a.GetAt(row, i) * b.GetAt(i, column);
            product.SetAt(row, column, sum);
        }
    }
    return product;
}

bool operator==(const CZVIMTransf& a, const CZVIMTransf& b) {
    for (int column = 0; column < 4; ++column) {
        if (ColumnOf(a, column) != ColumnOf(b, column)) return false;
    }
    return true;
}

bool operator!=(const CZVIMTransf& a, const CZVIMTransf& b) {
    return !(a == b);
}

CZVIMTransf coordinate_transf(const CZVIMPosition& origin, const CZVIMVector& xDirection,
                              const CZVIMVector& yDirection) {
    CZVIMVector xAxis = xDirection;
    CZVIMVector yAxis = yDirection;
    xAxis.normalise();
    yAxis = UnitPerpendicular(yAxis.normalise(), xAxis);
    yAxis = UnitPerpendicular(yAxis, xAxis);
    CZVIMVector zAxis = xAxis.CrossProduct(yAxis);
    if (!(zAxis.len() > 0.5)) {
        xAxis = CZVIMVector(1, 0, 0);
        yAxis = CZVIMVector(0, 1, 0);
        zAxis = CZVIMVector(0, 0, 1);
    }
    CZVIMTransf frame;
    SetRow(frame, 0, CZVIMVector(xAxis.GetX(), yAxis.GetX(), zAxis.GetX()), origin.GetX());
    SetRow(frame, 1, CZVIMVector(xAxis.GetY(), yAxis.GetY(), zAxis.GetY()), origin.GetY());
    SetRow(frame, 2, CZVIMVector(xAxis.GetZ(), yAxis.GetZ(), zAxis.GetZ()), origin.GetZ());
    return frame;
}

}  // namespace ZVIM::GeometryPrimitiveResource
