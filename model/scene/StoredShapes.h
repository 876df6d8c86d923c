#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "ZVSmartZvg/Comp.h"
#include "model/element/OpenedBlock.h"
#include "model/scene/RecordWalk.h"
#include "model/scene/ShapesAhead.h"
#include "model/scene/StoredGeos.h"
#include "model/scene/StoredShape.h"

namespace ZVSmartModel {

/// The shapes that components place. Each stored geometry is read once, whatever names lead to it,
/// and kept until `Trim`. Untrusted files are safe: walks end (see WalkPlacements), and what is
/// kept is charged to the block's budget.
class StoredShapes {
  public:
    /// Gets a shape, the name that it is placed under, and its coordinates to the model's. It may
    /// take what it likes out of the shape.
    using Use = std::function<void(const std::wstring& name, StoredShape& shape,
                                   const ZVSmartZvg::CZVIMTransf& toModel)>;

    /// `block` and `geos` are borrowed.
    StoredShapes(OpenedBlock& block, StoredGeos& geos, const ShapeWants& wants)
        : block(block), geos(geos), wants(wants), ahead(block, wants) {}

    /// What a FileWalk is given, which ends before this object does, so that the shapes that it
    /// comes to next are made ahead.
    GeoBlockUse Ahead() { return ahead.Use(); }

    /// Hands to `use` what the component's body consists of. Throws Error Damaged for a geometry
    /// that cannot be read. A name under which no geometry is stored is counted and left out.
    /// @{
    void Visit(const ZVSmartZvg::SZVLGZvgComp& comp, const Use& use) {
        Visit(ReferencedNames(comp), use);
    }
    void Visit(const std::vector<std::wstring>& names, const Use& use);
    /// @}

    /// The number of different names that led to no stored geometry, since the last `Trim`.
    std::size_t MissingGeometries() const { return missing.size(); }

    /// Where more than `mostBytes` are kept, forgets those that were not used for the longest time,
    /// down to half of that.
    void Trim(std::uint64_t mostBytes);

  private:
    struct Kept {
        StoredShape shape;
        std::uint64_t lastUse = 0;
    };

    StoredShape* Find(const std::wstring& name);
    StoredShape Read(std::uint64_t place, const std::wstring& name);
    StoredShape ReadRecord(std::uint64_t place);

    OpenedBlock& block;
    StoredGeos& geos;
    const ShapeWants wants;
    ShapesAhead ahead;
    std::unordered_map<std::uint64_t, Kept> byPlace;
    std::uint64_t keptBytes = 0;
    std::uint64_t uses = 0;
    std::unordered_set<std::wstring> missing;
};

}  // namespace ZVSmartModel
