#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "ZVSmartZvg/Comp.h"
#include "ZVSmartZvg/Geo.h"
#include "model/element/OpenedBlock.h"
#include "model/scene/RecordWalk.h"
#include "model/scene/StoredGeos.h"

namespace ZVSmartModel {

/// A record and where it lies. What is nested in it or placed by it comes separately.
struct PlacedRecord {
    const ZVSmartZvg::SZVLGZvgGeo* record;
    ZVSmartZvg::CZVIMTransf toModel;  ///< its coordinates to the model's
    std::wstring_view styleName;      ///< of its display attribute; empty for an outermost record
};

/// Finds what a component's body consists of: the geometries that its references lead to, those
/// that these place by name, and what is nested in them.
///
/// Untrusted files are safe: walks end (see WalkPlacements) and all is charged to the block's
/// budget. Geometries that were read are kept up to a number of bytes, for they may be placed
/// again.
class PlacedRecords {
  public:
    using Use = std::function<void(const PlacedRecord& placed)>;

    /// `block` is borrowed.
    explicit PlacedRecords(OpenedBlock& block)
        : limits(block.Limits()), geos(block), held(limits) {}

    /// Hands every record of the component's body to `use`. What cannot be read is left out and
    /// remembered; a name that the file does not hold is the host's own and just left out.
    void Visit(const ZVSmartZvg::SZVLGZvgComp& comp, const Use& use);

    /// Why the first geometry could not be read that could not; none where all could.
    const std::optional<Error>& FirstDamage() const { return firstDamage; }

  private:
    struct Stored {
        ZVSmartZvg::SZVLGZvgGeo geo;
        NamedPlacements placements;
    };

    /// What is stored there; null where that cannot be read. Holds until the next call.
    const Stored* Read(std::uint64_t place);

    Budget& limits;
    StoredGeos geos;
    std::unordered_map<std::uint64_t, std::optional<Stored>> read;  ///< none: it cannot be
    HeldMemory held;                                                ///< by `read`
    std::optional<Error> firstDamage;
};

}  // namespace ZVSmartModel
