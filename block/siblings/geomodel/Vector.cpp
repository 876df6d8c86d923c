// Serial form of a vector: f64 x, y, z.

#include "ZVIM/Vector.h"

#include <algorithm>
#include <cmath>

#include "siblings/geomodel/Bulk.h"

namespace ZVIM::GeometryPrimitiveResource {

static_assert(sizeof(CZVIMVector) == 3 * sizeof(double));

namespace {

// Between these the square of a length is exact to rounding; outside, parts of it may have
// overflowed or sunk below the normal numbers.
constexpr double smallestSafeSquare = 1e-280;
constexpr double largestSafeSquare = 1e300;

bool IsSafeSquare(double square) {
    return square >= smallestSafeSquare && square <= largestSafeSquare;
}

double LargestPart(const CZVIMVector& v) {
    return std::max({std::fabs(v.GetX()), std::fabs(v.GetY()), std::fabs(v.GetZ())});
}

CZVIMVector DividedBy(const CZVIMVector& v, double divisor) {
    return CZVIMVector(v.GetX() / divisor, v.GetY() / divisor, v.GetZ() / divisor);
}

bool IsFinite(const CZVIMVector& v) {
    return std::isfinite(v.GetX()) && std::isfinite(v.GetY()) && std::isfinite(v.GetZ());
}

bool HasDirection(const CZVIMVector& v) {
    return IsFinite(v) && LargestPart(v) > 0;
}

}  // namespace

double CZVIMVector::len() const {
    const double square = DotProduct(*this);
    if (std::isnan(square) || IsSafeSquare(square)) return std::sqrt(square);
    const double largest = LargestPart(*this);
    if (largest == 0 || std::isinf(largest)) return largest;
    const CZVIMVector scaled = DividedBy(*this, largest);
    return largest * std::sqrt(scaled.DotProduct(scaled));
}

CZVIMVector& CZVIMVector::normalise() {
    if (!HasDirection(*this)) return *this;
    if (!IsSafeSquare(DotProduct(*this))) *this = DividedBy(*this, LargestPart(*this));
    *this = DividedBy(*this, len());
    return *this;
}

CZVIMVector& CZVIMVector::RotateByAxis(double angleRadians, const CZVIMVector& axis) {
    if (!HasDirection(axis)) return *this;
    CZVIMVector unit = axis;
    unit.normalise();
    const double cosine = std::cos(angleRadians);
    const double sine = std::sin(angleRadians);
    *this = *this * cosine + unit.CrossProduct(*this) * sine +
            unit * (unit.DotProduct(*this) * (1 - cosine));
    return *this;
}

double CZVIMVector::DotProduct(const CZVIMVector& other) const {
    return x * other.x + y * other.y + z * other.z;
}

CZVIMVector CZVIMVector::CrossProduct(const CZVIMVector& other) const {
    return CZVIMVector(y * other.z - z * other.y, z * other.x - x * other.z,
                       x * other.y - y * other.x);
}

void CZVIMVector::WriteSerial(CZVFTSerialWriter* writer, unsigned int) const {
    WriteDoubles(writer, *this);
}

void CZVIMVector::ReadSerial(CZVFTSerialReader* reader, unsigned int) {
    ReadDoubles(reader, *this);
}

CZVIMVector operator+(const CZVIMVector& a, const CZVIMVector& b) {
    return CZVIMVector(a.GetX() + b.GetX(), a.GetY() + b.GetY(), a.GetZ() + b.GetZ());
}

CZVIMVector operator-(const CZVIMVector& a, const CZVIMVector& b) {
    return CZVIMVector(a.GetX() - b.GetX(), a.GetY() - b.GetY(), a.GetZ() - b.GetZ());
}

CZVIMVector operator*(const CZVIMVector& vector, double factor) {
    return CZVIMVector(vector.GetX() * factor, vector.GetY() * factor, vector.GetZ() * factor);
}

CZVIMVector operator*(double factor, const CZVIMVector& vector) {
    return vector * factor;
}

bool operator==(const CZVIMVector& a, const CZVIMVector& b) {
    return a.GetX() == b.GetX() && a.GetY() == b.GetY() && a.GetZ() == b.GetZ();
}

bool operator!=(const CZVIMVector& a, const CZVIMVector& b) {
    return !(a == b);
}

bool antiparallel(const CZVIMVector& a, const CZVIMVector& b, double toleranceRadians) {
    if (!HasDirection(a) || !HasDirection(b)) return false;
    CZVIMVector unitA = a;
    CZVIMVector unitB = b;
    unitA.normalise();
    unitB.normalise();
    // The arc tangent stays exact near π, where the arc cosine loses half the digits.
    const double angleToOpposite =
        std::atan2(unitA.CrossProduct(unitB).len(), -unitA.DotProduct(unitB));
    return angleToOpposite <= toleranceRadians;
}

void WriteVectors(CZVFTSerialWriter* writer, const std::vector<CZVIMVector>& vectors) {
    WriteDoublesList(writer, vectors);
}

void ReadVectors(CZVFTSerialReader* reader, std::vector<CZVIMVector>& vectors) {
    ReadDoublesList(reader, vectors);
}

}  // namespace ZVIM::GeometryPrimitiveResource
