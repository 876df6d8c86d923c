#include "processing/CylinderFace.h"

#include <algorithm>
#include <cmath>

#include "ZVIM/Config.h"
#include "processing/KeyOrder.h"
#include "processing/TurnedFrame.h"

namespace ZVSmartZvg {

namespace {

using ZVIM::GeometryPrimitiveResource::CZVIMGeoModelConfig;

constexpr double smallestCylinderRadius = 1e-05;

/// The planes are those of local heights 0 and `height`, wherever the face's own heights start.
bool IsOnCapPlanes(const CZVIMShell& localShell, double height) {
    const auto& points = localShell.GetPoints();
    return std::none_of(points.begin(), points.end(), [height](const CZVIMPosition& point) {
        return std::fabs(point.GetZ()) >= keyTolerance &&
               std::fabs(point.GetZ() - height) >= keyTolerance;
    });
}

}  // namespace

bool CylinderKey::operator<(const CylinderKey& other) const {
    if (const int order = CompareValues(radius, other.radius)) return order < 0;
    if (const int order = CompareValues(span, other.span)) return order < 0;
    if (const int order = CompareValues(height, other.height)) return order < 0;
    return CompareShells(localShell, other.localShell) < 0;
}

std::optional<DerivedFace<CylinderKey>> DeriveCylinderFace(const SZVLGParamCylinderFace& face) {
    const double height = std::fabs(face.endHeight - face.startHeight);
    if (!(height >= keyTolerance && height <= largestLength)) return std::nullopt;
    const std::optional<TurnedFrame> frame = MakeTurnedFrame(
        {face.center, face.axis, face.radiusVector, face.refVector, face.startAngle, face.endAngle},
        smallestCylinderRadius);
    if (!frame || !IsUsable(face.shell.GetPoints())) return std::nullopt;

    DerivedFace<CylinderKey> derived;
    derived.transform = frame->transform;
    derived.localShell = face.shell;
    derived.localShell.TransformBy(frame->transform.inverse());
    derived.key.radius = frame->radius;
    derived.key.span = frame->span;
    const bool zAgainstAxis =
        antiparallel(frame->zUnit, frame->axisUnit, CZVIMGeoModelConfig::getnor());
    derived.key.height = zAgainstAxis ? -height : height;
    if (!IsOnCapPlanes(derived.localShell, derived.key.height)) {
        derived.key.localShell = derived.localShell;
    }
    return derived;
}

}  // namespace ZVSmartZvg
