#include "processing/DerivedFace.h"

#include <cmath>
#include <cstddef>

#include "ZVIM/Mesh.h"
#include "processing/KeyAgreement.h"
#include "processing/TurnedFrame.h"

namespace ZVSmartZvg {

namespace {

using ZVIM::GeometryModelResource::CZVIMMesh;

constexpr double smallestRevolvedRadius = 0.001;
constexpr double stepsPerHalfTurn = 18.0;
constexpr double pi = 3.141592653589793;
constexpr double denserFromRadius = 3000.0;
constexpr double shortestStep = 0.01;
constexpr double mostSteps = 1e6;
/// Two profile points fit with the most steps; a profile of a million points fits with none.
constexpr double mostMeshPoints = 2.5e6;

/// The number of steps that the sweep is cut into, a whole number that may be too large for int.
double StepCount(const TurnedFrame& frame) {
    const double scale = frame.radius > denserFromRadius ? frame.radius / denserFromRadius : 1.0;
    return std::floor(frame.span * stepsPerHalfTurn / pi * scale + 2.0);
}

/// The angles of the samples from 0 to the span, one more than there are steps.
std::vector<double> SampleAngles(const TurnedFrame& frame, int steps) {
    const double arc = frame.radius * frame.span;
    std::vector<double> angles;
    angles.reserve(static_cast<std::size_t>(steps) + 1);
    for (int i = 0; i <= steps; ++i) {
        double along = i * (arc / steps);
        if (std::fabs(along - arc) < keyTolerance) along = arc;
        angles.push_back(along / frame.radius);
    }
    return angles;
}

/// A row for each profile point, a column for each angle, in the local frame.
CZVIMMesh SweptMesh(const SZVLGParamRevolvedFace& face, const TurnedFrame& frame,
                    const std::vector<double>& angles) {
    const CZVIMTransf toLocal = frame.transform.inverse();
    CZVIMMesh mesh;
    mesh.SetRow(static_cast<int>(face.profile.size()));
    mesh.SetColumn(static_cast<int>(angles.size()));
    for (const CZVIMPosition& point : face.profile) {
        for (const double sample : angles) {
            const double angle = sample + face.startAngle;
            CZVIMPosition swept =
                face.center + (point.GetX() * std::cos(angle)) * frame.radiusUnit +
                (point.GetX() * std::sin(angle)) * frame.refUnit + point.GetZ() * frame.axisUnit;
            mesh.AddPt(swept.TransformBy(toLocal));
        }
    }
    return mesh;
}

bool AgreeSizes(const RevolvedKey& a, const RevolvedKey& b) {
    return AgreeValues(a.radius, b.radius) && AgreeValues(a.span, b.span);
}

}  // namespace

bool RevolvedKey::operator<(const RevolvedKey& other) const {
    if (const int order = CompareValues(radius, other.radius)) return order < 0;
    if (const int order = CompareValues(span, other.span)) return order < 0;
    if (const int order = ComparePoints(profile, other.profile)) return order < 0;
    return CompareShells(localShell, other.localShell) < 0;
}

bool RevolvedKey::Agrees(const RevolvedKey& other) const {
    // The profile is a column of the shell.
    return AgreeSizes(*this, other) && AgreeShells(localShell, other.localShell);
}

std::optional<CZVIMTransf> RevolvedKey::TurnFrom(const RevolvedKey& other) const {
    if (!AgreeSizes(*this, other) || !AgreePoints(ownProfile, other.ownProfile)) {
        return std::nullopt;
    }
    return FittingTurn(other.localShell, other.radius, localShell, radius);
}

std::vector<ShapeSignature> RevolvedKey::Signatures() const {
    return {SignatureOf(localShell)};
}

std::optional<DerivedFace<RevolvedKey>> DeriveRevolvedFace(const SZVLGParamRevolvedFace& face,
                                                           CZVIMTransf& transform) {
    if (face.profile.size() < 2) return std::nullopt;
    const std::optional<TurnedFrame> frame = MakeTurnedFrame(
        {face.center, face.axis, face.radiusVector, face.refVector, face.startAngle, face.endAngle},
        smallestRevolvedRadius);
    if (!frame) return std::nullopt;
    const double steps = StepCount(*frame);
    const auto rows = static_cast<double>(face.profile.size());
    if (!(steps <= mostSteps) || !(rows * (steps + 1.0) <= mostMeshPoints)) return std::nullopt;
    if (!IsUsable(face.profile)) return std::nullopt;

    transform = frame->transform;
    if (!(frame->radius * frame->span / steps >= shortestStep)) return std::nullopt;

    const std::vector<double> angles = SampleAngles(*frame, static_cast<int>(steps));
    const CZVIMMesh mesh = SweptMesh(face, *frame, angles);
    DerivedFace<RevolvedKey> derived;
    derived.transform = frame->transform;
    derived.key.radius = frame->radius;
    derived.key.span = frame->span;
    for (std::size_t i = 0; i < mesh.GetPoints().size(); i += angles.size()) {
        derived.key.profile.push_back(mesh.GetPoints()[i]);
    }
    for (const CZVIMPosition& point : face.profile) {
        derived.key.ownProfile.emplace_back(point.GetX(), 0, point.GetZ());
    }
    derived.key.localShell = MeshToShell(mesh);
    return derived;
}

}  // namespace ZVSmartZvg
