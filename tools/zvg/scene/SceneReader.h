#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>

#include "ZVSmartZvg/Comp.h"
#include "tools/zvg/reading/OpenedBlock.h"
#include "tools/zvg/scene/RecordWalk.h"
#include "tools/zvg/scene/SceneBuilder.h"
#include "tools/zvg/scene/StoredGeos.h"

/// Reads the bodies of a block file's components into a scene. Each stored geometry is read once.
///
/// Untrusted files are safe: walks end (see WalkPlacements), and memory stays in proportion to
/// the decoded geometries and to the number of placements, which has a limit.
class SceneReader {
  public:
    /// `block` is borrowed. With `salvage` a geometry that cannot be decoded is left out; `block`
    /// remembers it.
    explicit SceneReader(OpenedBlock& block, bool salvage = false)
        : block(block), geos(block), salvage(salvage) {}

    /// Adds a component with its body; components are numbered in the order in which they come.
    /// Throws ToolError Damaged for a geometry that cannot be decoded, and for more placements
    /// than a scene can have. A name under which no geometry is stored is counted and left out.
    void Add(const ZVSmartZvg::SZVLGZvgComp& comp);

    /// The number of different names that led to no stored geometry.
    std::size_t MissingGeometries() const { return missing; }

    Scene Take() { return builder.Take(); }

  private:
    struct Stored {
        bool there = false;
        std::optional<std::size_t> shape;
        NamedPlacements placements;
    };

    const Stored& Read(const std::wstring& name);

    OpenedBlock& block;
    StoredGeos geos;
    bool salvage;
    SceneBuilder builder;
    std::unordered_map<std::wstring, Stored> storedByName;
    std::size_t missing = 0;
};
