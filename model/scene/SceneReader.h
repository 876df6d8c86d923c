#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

#include "ZVSmartZvg/Comp.h"
#include "model/element/OpenedBlock.h"
#include "model/scene/RecordWalk.h"
#include "model/scene/SceneBuilder.h"
#include "model/scene/StoredGeos.h"

namespace ZVSmartModel {

/// Reads the bodies of a block file's components into a scene. Each stored geometry is read once,
/// whatever names lead to it. Untrusted files are safe: walks end (see WalkPlacements), and what is
/// kept is charged to the block's budget.
class SceneReader {
  public:
    /// `block` is borrowed. With `salvage` a geometry that cannot be decoded is left out; `block`
    /// remembers it.
    explicit SceneReader(OpenedBlock& block, bool salvage = false)
        : block(block), geos(block), salvage(salvage) {}

    /// Adds a component with its body; components are numbered in the order in which they come.
    /// Throws Error Damaged for a geometry that cannot be decoded, and for more placements
    /// than a scene can have. A name under which no geometry is stored is counted and left out.
    void Add(const ZVSmartZvg::SZVLGZvgComp& comp);

    /// The number of different names that led to no stored geometry.
    std::size_t MissingGeometries() const { return missing; }

    Scene Take() { return builder.Take(); }

  private:
    /// What is read of one stored geometry.
    struct Stored {
        std::optional<std::size_t> shape;
        NamedPlacements placements;
    };

    /// A name that components use; what it leads to is null where the file does not hold it.
    struct Named {
        const Stored* stored = nullptr;
        std::optional<std::size_t> shape;  ///< bears the name
    };

    const Named& Find(const std::wstring& name);
    Stored Read(const std::wstring& name, std::uint64_t place);

    OpenedBlock& block;
    StoredGeos geos;
    bool salvage;
    SceneBuilder builder;
    std::unordered_map<std::uint64_t, Stored> storedByPlace;
    std::unordered_map<std::wstring, Named> names;
    std::size_t missing = 0;
};

}  // namespace ZVSmartModel
