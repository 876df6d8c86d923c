#include "processing/DerivedFace.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "ZVIM/Config.h"
#include "processing/KeyAgreement.h"
#include "processing/TurnedFrame.h"

namespace ZVSmartZvg {

namespace {

using ZVIM::GeometryPrimitiveResource::CZVIMGeoModelConfig;

constexpr double smallestCylinderRadius = 1e-05;
/// Marks the signatures of faces on cap planes, whose shells do not count.
constexpr std::uint64_t capPlanesOnly = 1;

/// The planes are those of local heights 0 and `height`, wherever the face's own heights start.
bool IsOnCapPlanes(const CZVIMShell& localShell, double height) {
    const auto& points = localShell.GetPoints();
    return std::none_of(points.begin(), points.end(), [height](const CZVIMPosition& point) {
        return std::fabs(point.GetZ()) >= keyTolerance &&
               std::fabs(point.GetZ() - height) >= keyTolerance;
    });
}

bool AgreeSizes(const CylinderKey& a, const CylinderKey& b) {
    return AgreeValues(a.radius, b.radius) && AgreeValues(a.span, b.span) &&
           AgreeValues(a.height, b.height);
}

}  // namespace

bool CylinderKey::operator<(const CylinderKey& other) const {
    if (const int order = CompareValues(radius, other.radius)) return order < 0;
    if (const int order = CompareValues(span, other.span)) return order < 0;
    if (const int order = CompareValues(height, other.height)) return order < 0;
    if (isOnCapPlanes || other.isOnCapPlanes) return isOnCapPlanes && !other.isOnCapPlanes;
    return CompareShells(localShell, other.localShell) < 0;
}

bool CylinderKey::Agrees(const CylinderKey& other) const {
    if (!AgreeSizes(*this, other)) return false;
    // A point that noise takes off its cap plane leaves the shells as close as they were.
    return (isOnCapPlanes && other.isOnCapPlanes) || AgreeShells(localShell, other.localShell);
}

std::optional<CZVIMTransf> CylinderKey::TurnFrom(const CylinderKey& other) const {
    if (!AgreeSizes(*this, other)) return std::nullopt;
    return FittingTurn(other.localShell, other.radius, localShell, radius);
}

std::vector<ShapeSignature> CylinderKey::Signatures() const {
    if (!isOnCapPlanes) return {SignatureOf(localShell)};
    return {{capPlanesOnly, {radius, span, height}}, SignatureOf(localShell)};
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
    derived.key.localShell = face.shell;
    derived.key.localShell.TransformBy(frame->transform.inverse());
    derived.key.radius = frame->radius;
    derived.key.span = frame->span;
    const bool zAgainstAxis =
        antiparallel(frame->zUnit, frame->axisUnit, CZVIMGeoModelConfig::getnor());
    derived.key.height = zAgainstAxis ? -height : height;
    derived.key.isOnCapPlanes = IsOnCapPlanes(derived.key.localShell, derived.key.height);
    return derived;
}

}  // namespace ZVSmartZvg
