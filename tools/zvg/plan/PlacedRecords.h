#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>

#include "ZVSmartZvg/Comp.h"
#include "ZVSmartZvg/Geo.h"
#include "tools/zvg/reading/OpenedBlock.h"

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
/// end at 16 links, and a component places at most `mostPlacements` geometries.
class PlacedRecords {
  public:
    static constexpr std::size_t mostPlacements = 10000;

    using Use = std::function<void(const PlacedRecord& placed)>;

    /// `block` is borrowed.
    explicit PlacedRecords(OpenedBlock& block) : block(block) {}

    /// Hands every record of the component's body to `use`. What cannot be read is left out and
    /// remembered; a name that the file does not hold is the host's own and just left out.
    void Visit(const ZVSmartZvg::SZVLGZvgComp& comp, const Use& use);

    /// Throws ToolError Damaged for the first geometry that could not be read, if any.
    void ThrowIfDamaged() const;

  private:
    bool Read(const std::wstring& identification, ZVSmartZvg::SZVLGZvgGeo& geo);
    bool IsStored(const std::wstring& identification);
    void RememberDamage(const std::wstring& identification, const std::string& reason);

    OpenedBlock& block;
    std::unordered_set<std::wstring> stored;  ///< filled when it is first asked
    std::string firstDamage;
};
