#pragma once

#include <optional>
#include <vector>

#include "ZVSmartZvg/ParamFace.h"

namespace ZVSmartZvg {

/// Beyond this length, in the model's unit, a way there and back through a frame does not keep
/// the tolerance of the keys.
constexpr double largestLength = 1e11;
/// Nor does a turn by more than this angle, in radians, on large radii.
constexpr double largestAngle = 1e6;

/// Finite and no farther from 0 than `largestLength`, in each direction.
bool IsUsable(const CZVIMPosition& point);
bool IsUsable(const CZVIMVector& vector);
bool IsUsable(const std::vector<CZVIMPosition>& points);

/// What cylinder and revolved faces have in common: a frame at `center` whose X points along the
/// radius vector turned by the start angle and whose Z is radius vector × reference vector.
struct TurnedFrame {
    CZVIMVector radiusUnit;  ///< along the radius vector, not turned; length 1 as the next three
    CZVIMVector refUnit;
    CZVIMVector axisUnit;
    CZVIMVector zUnit;
    double radius = 0;
    double span = 0;        ///< what the sweep has over whole turns, 0.001 at least
    CZVIMTransf transform;  ///< local to world
};

/// Where and how a face turns, in the terms of the public records.
struct TurnedFrameInput {
    const CZVIMPosition& center;
    const CZVIMVector& axis;
    const CZVIMVector& radiusVector;
    const CZVIMVector& refVector;
    double startAngle;
    double endAngle;
};

/// None where a number is not finite or too large, where a vector has no direction or the two
/// in-plane ones have the same, where the radius is below `smallestRadius`, and where the span is
/// below 0.001: so is that of a whole turn and of a sweep backwards.
std::optional<TurnedFrame> MakeTurnedFrame(const TurnedFrameInput& input, double smallestRadius);

}  // namespace ZVSmartZvg
