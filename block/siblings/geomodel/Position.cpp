// Serial form of a position: f64 x, y, z.

#include "ZVIM/Position.h"

#include <cmath>

#include "ZVIM/Config.h"
#include "ZVIM/Transf.h"
#include "siblings/geomodel/Bulk.h"

namespace ZVIM::GeometryPrimitiveResource {

static_assert(sizeof(CZVIMPosition) == 3 * sizeof(double));

namespace {

// -1, 0 or 1. The steps stay doubles, so that no value is too large for them.
int CompareSnapped(double a, double b, double step) {
    const double stepsA = std::round(a / step);
    const double stepsB = std::round(b / step);
    if (stepsA < stepsB) return -1;
    if (stepsA > stepsB) return 1;
    return int{std::isnan(stepsA)} - int{std::isnan(stepsB)};
}

int ComparePositions(const CZVIMPosition& a, const CZVIMPosition& b) {
    const double step = CZVIMGeoModelConfig::getabs();
    const int byX = CompareSnapped(a.GetX(), b.GetX(), step);
    if (byX != 0) return byX;
    const int byY = CompareSnapped(a.GetY(), b.GetY(), step);
    if (byY != 0) return byY;
    return CompareSnapped(a.GetZ(), b.GetZ(), step);
}

}  // namespace

double CZVIMPosition::DistToPt(const CZVIMPosition& other) const {
    return (*this - other).len();
}

CZVIMPosition& CZVIMPosition::TransformBy(const CZVIMTransf& transf) {
    const auto row = [&](int r) {
        return transf.GetAt(r, 0) * x + transf.GetAt(r, 1) * y + transf.GetAt(r, 2) * z +
               transf.GetAt(r, 3);
    };
    *this = CZVIMPosition(row(0), row(1), row(2));
    return *this;
}

void CZVIMPosition::WriteSerial(CZVFTSerialWriter* writer, unsigned int) const {
    WriteDoubles(writer, *this);
}

void CZVIMPosition::ReadSerial(CZVFTSerialReader* reader, unsigned int) {
    ReadDoubles(reader, *this);
}

bool operator<(const CZVIMPosition& a, const CZVIMPosition& b) {
    return ComparePositions(a, b) < 0;
}

bool operator==(const CZVIMPosition& a, const CZVIMPosition& b) {
    return ComparePositions(a, b) == 0;
}

bool operator!=(const CZVIMPosition& a, const CZVIMPosition& b) {
    return !(a == b);
}

CZVIMVector operator-(const CZVIMPosition& to, const CZVIMPosition& from) {
    return CZVIMVector(to.GetX() - from.GetX(), to.GetY() - from.GetY(), to.GetZ() - from.GetZ());
}

CZVIMPosition operator+(const CZVIMPosition& position, const CZVIMVector& vector) {
    return CZVIMPosition(position.GetX() + vector.GetX(), position.GetY() + vector.GetY(),
                         position.GetZ() + vector.GetZ());
}

CZVIMPosition operator-(const CZVIMPosition& position, const CZVIMVector& vector) {
    return position + -vector;
}

void WritePositions(CZVFTSerialWriter* writer, const std::vector<CZVIMPosition>& positions) {
    WriteDoublesList(writer, positions);
}

void ReadPositions(CZVFTSerialReader* reader, std::vector<CZVIMPosition>& positions) {
    ReadDoublesList(reader, positions);
}

}  // namespace ZVIM::GeometryPrimitiveResource
