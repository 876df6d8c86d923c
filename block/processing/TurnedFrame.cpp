#include "processing/TurnedFrame.h"

#include <algorithm>
#include <cmath>

#include "ZVIM/Config.h"
#include "processing/KeyAgreement.h"

namespace ZVSmartZvg {

namespace {

using ZVIM::GeometryPrimitiveResource::CZVIMGeoModelConfig;

constexpr double wholeTurn = 6.283185307179586;

bool IsWithin(double value, double limit) {
    return std::fabs(value) <= limit;
}

/// The direction of `vector`; none where it has none.
std::optional<CZVIMVector> Direction(CZVIMVector vector) {
    vector.normalise();
    // A vector without a direction stays as it was.
    if (!(std::fabs(vector.len() - 1.0) < 1e-9)) return std::nullopt;
    return vector;
}

}  // namespace

bool IsUsable(const CZVIMPosition& point) {
    return IsWithin(point.GetX(), largestLength) && IsWithin(point.GetY(), largestLength) &&
           IsWithin(point.GetZ(), largestLength);
}

bool IsUsable(const CZVIMVector& vector) {
    return IsWithin(vector.GetX(), largestLength) && IsWithin(vector.GetY(), largestLength) &&
           IsWithin(vector.GetZ(), largestLength);
}

bool IsUsable(const std::vector<CZVIMPosition>& points) {
    return std::all_of(points.begin(), points.end(),
                       [](const CZVIMPosition& point) { return IsUsable(point); });
}

std::optional<TurnedFrame> MakeTurnedFrame(const TurnedFrameInput& input, double smallestRadius) {
    if (!IsUsable(input.center) || !IsUsable(input.axis) || !IsUsable(input.radiusVector) ||
        !IsUsable(input.refVector) || !IsWithin(input.startAngle, largestAngle) ||
        !IsWithin(input.endAngle, largestAngle)) {
        return std::nullopt;
    }
    TurnedFrame frame;
    frame.radius = input.radiusVector.len();
    frame.span = std::fmod(input.endAngle - input.startAngle, wholeTurn);
    if (!(frame.span >= keyTolerance) || !(frame.radius >= smallestRadius)) return std::nullopt;

    const std::optional<CZVIMVector> radiusUnit = Direction(input.radiusVector);
    const std::optional<CZVIMVector> refUnit = Direction(input.refVector);
    const std::optional<CZVIMVector> axisUnit = Direction(input.axis);
    if (!radiusUnit || !refUnit || !axisUnit) return std::nullopt;
    frame.radiusUnit = *radiusUnit;
    frame.refUnit = *refUnit;
    frame.axisUnit = *axisUnit;

    frame.zUnit = radiusUnit->CrossProduct(*refUnit);
    const double sineBetween = frame.zUnit.len();
    if (!(sineBetween > CZVIMGeoModelConfig::getnor())) return std::nullopt;
    frame.zUnit.normalise();

    CZVIMVector turnedRadius = frame.radiusUnit;
    CZVIMVector turnedRef = frame.refUnit;
    turnedRadius.RotateByAxis(input.startAngle, frame.zUnit);
    turnedRef.RotateByAxis(input.startAngle, frame.zUnit);
    frame.transform = coordinate_transf(input.center, turnedRadius, turnedRef);
    return frame;
}

}  // namespace ZVSmartZvg
