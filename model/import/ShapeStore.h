#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "model/import/Model.h"

namespace ZVSmartModel {

/// The shape in the one form in which shapes are compared and stored, so that the order in which
/// an importer yields points and triangles does not matter: coordinates are rounded to
/// `ShapeStore::coordinateStep`, points that then coincide are one, triangles that then vanish are
/// dropped, points stand in ascending order, and so do the triangles. Curves are rounded too, and
/// stay in their order. What has numbers that are no coordinates is left out and counted.
ModelShape CanonicalShape(const ModelShape& shape);

/// What a shape in that form comes to. Shapes that differ have the same `hash` once in 2^64 times,
/// and the same `check` besides as rarely.
struct ShapeDigest {
    std::uint64_t hash = 0, check = 0;

    friend auto operator<=>(const ShapeDigest&, const ShapeDigest&) = default;
};
ShapeDigest DigestOf(const ModelShape& canonical);

/// Collects the shapes of a model and keeps each distinct one once, in its canonical form.
class ShapeStore {
  public:
    /// 2^-24 m, 0.06 µm: far below what any model means, and a power of two, so that the low
    /// bits of every stored coordinate are zero and compress away.
    static constexpr double coordinateStep = 1.0 / 16777216;

    /// The number of `shape` in `Shapes()`; nothing where it has no triangle and no curve left.
    /// Triangles and curves whose numbers are no coordinates are left out and counted, so that a
    /// shape of which they leave nothing is stored too.
    std::optional<std::size_t> Add(const ModelShape& shape);

    const std::vector<ModelShape>& Shapes() const { return shapes; }
    /// Hands the shapes over; the store is empty afterwards.
    std::vector<ModelShape> Take();

  private:
    std::vector<ModelShape> shapes;
    std::multimap<std::uint64_t, std::size_t> shapeByHash;
};

}  // namespace ZVSmartModel
