#include "processing/DerivedFace.h"

#include "ZVIM/Mesh.h"
#include "processing/KeyAgreement.h"
#include "processing/TurnedFrame.h"

namespace ZVSmartZvg {

namespace {

using ZVIM::GeometryModelResource::CZVIMMesh;

using Columns = const std::vector<CZVIMPosition>* [2];

/// The first vector from the first point of the first column, through `columns` in their order,
/// that `isLongEnough`.
template <class Test>
std::optional<CZVIMVector> FirstVector(const CZVIMPosition& origin, const Columns& columns,
                                       Test isLongEnough) {
    for (const std::vector<CZVIMPosition>* column : columns) {
        for (const CZVIMPosition& point : *column) {
            const CZVIMVector vector = point - origin;
            if (isLongEnough(vector)) return vector;
        }
    }
    return std::nullopt;
}

/// Origin in the first point; X towards the first point that is not there too, Y towards the
/// side of the first point beside the X line.
std::optional<CZVIMTransf> PlacingTransform(const SZVLGParamRuledFace& face) {
    const CZVIMPosition& origin = face.firstColumn.front();
    const std::optional<CZVIMVector> xDirection =
        FirstVector(origin, {&face.firstColumn, &face.secondColumn},
                    [](const CZVIMVector& vector) { return vector.len() >= keyTolerance; });
    if (!xDirection) return std::nullopt;
    CZVIMVector xUnit = *xDirection;
    xUnit.normalise();
    const std::optional<CZVIMVector> yDirection = FirstVector(
        origin, {&face.secondColumn, &face.firstColumn}, [&xUnit](const CZVIMVector& vector) {
            return xUnit.CrossProduct(vector).len() >= keyTolerance;
        });
    if (!yDirection) return std::nullopt;
    return coordinate_transf(origin, xUnit, *yDirection);
}

}  // namespace

bool RuledKey::operator<(const RuledKey& other) const {
    return ComparePoints(localShell.GetPoints(), other.localShell.GetPoints()) < 0;
}

bool RuledKey::Agrees(const RuledKey& other) const {
    return AgreePoints(localShell.GetPoints(), other.localShell.GetPoints());
}

std::optional<CZVIMTransf> RuledKey::TurnFrom(const RuledKey& other) const {
    return FittingTurn(other.localShell.GetPoints(), localShell.GetPoints());
}

std::vector<ShapeSignature> RuledKey::Signatures() const {
    return {SignatureOf(localShell)};
}

std::optional<DerivedFace<RuledKey>> DeriveRuledFace(const SZVLGParamRuledFace& face) {
    if (face.firstColumn.size() != face.secondColumn.size() || face.firstColumn.size() < 2 ||
        !IsUsable(face.firstColumn) || !IsUsable(face.secondColumn)) {
        return std::nullopt;
    }
    const std::optional<CZVIMTransf> transform = PlacingTransform(face);
    if (!transform) return std::nullopt;

    CZVIMMesh mesh;
    if (!mesh.AddColPts(face.firstColumn) || !mesh.AddColPts(face.secondColumn)) {
        return std::nullopt;
    }
    DerivedFace<RuledKey> derived;
    derived.transform = *transform;
    derived.key.localShell = MeshToShell(mesh);
    derived.key.localShell.TransformBy(transform->inverse());
    return derived;
}

}  // namespace ZVSmartZvg
