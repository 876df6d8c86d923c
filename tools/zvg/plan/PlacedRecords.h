#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "ZVSmartZvg/Comp.h"
#include "ZVSmartZvg/Geo.h"
#include "tools/zvg/reading/OpenedBlock.h"
#include "tools/zvg/scene/StoredGeos.h"

/// A record and where it lies. What is nested in it or placed by it comes separately.
struct PlacedRecord {
    const ZVSmartZvg::SZVLGZvgGeo* record;
    ZVSmartZvg::CZVIMTransf toModel;  ///< its coordinates to the model's
    std::wstring_view styleName;      ///< of its display attribute; empty for an outermost record
};

/// Finds what a component's body consists of: the geometries that its references lead to, those
/// that these place by name, and what is nested in them.
///
/// Untrusted files are safe: a name that leads back to itself is left out, chains of placements
/// end at 16 links, and a component places at most `mostPlacementsOfComponent` geometries.
class PlacedRecords {
  public:
    using Use = std::function<void(const PlacedRecord& placed)>;

    /// `block` is borrowed.
    explicit PlacedRecords(OpenedBlock& block) : geos(block) {}

    /// Hands every record of the component's body to `use`. What cannot be read is left out and
    /// remembered; a name that the file does not hold is the host's own and just left out.
    void Visit(const ZVSmartZvg::SZVLGZvgComp& comp, const Use& use);

    /// Throws ToolError Damaged for the first geometry that could not be read, if any.
    void ThrowIfDamaged() const;

  private:
    bool Read(const std::wstring& identification, ZVSmartZvg::SZVLGZvgGeo& geo);

    StoredGeos geos;
    std::optional<ToolError> firstDamage;
};
