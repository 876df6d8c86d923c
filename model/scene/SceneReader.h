#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

#include "ZVSmartZvg/Comp.h"
#include "model/element/OpenedBlock.h"
#include "model/scene/SceneBuilder.h"
#include "model/scene/StoredGeos.h"
#include "model/scene/StoredShapes.h"

namespace ZVSmartModel {

/// Reads the bodies of a block file's components into a scene. Untrusted files are safe: see
/// StoredShapes.
class SceneReader {
  public:
    /// `block` is borrowed. With `salvage` a geometry that cannot be decoded is left out; `block`
    /// remembers it.
    explicit SceneReader(OpenedBlock& block, bool salvage = false)
        : block(block), geos(block), shapes(block, geos, {false, salvage}) {}

    /// See StoredShapes.
    GeoBlockUse Ahead() { return shapes.Ahead(); }

    /// Adds a component with its body; components are numbered in the order in which they come.
    /// Throws Error Damaged for a geometry that cannot be decoded, and for more placements
    /// than a scene can have. A name under which no geometry is stored is counted and left out.
    void Add(const ZVSmartZvg::SZVLGZvgComp& comp);

    /// The number of different names that led to no stored geometry.
    std::size_t MissingGeometries() const { return shapes.MissingGeometries(); }

    Scene Take() { return builder.Take(); }

  private:
    std::optional<std::size_t> ShapeOf(const std::wstring& name, StoredShape& stored);

    OpenedBlock& block;
    StoredGeos geos;
    StoredShapes shapes;
    SceneBuilder builder;
    /// The builder's numbers; none where there is nothing to show.
    /// @{
    std::unordered_map<std::uint64_t, std::optional<std::size_t>> byPlace;
    std::unordered_map<std::wstring, std::optional<std::size_t>> byName;
    /// @}
};

}  // namespace ZVSmartModel
