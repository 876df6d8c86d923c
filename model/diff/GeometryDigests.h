#pragma once

#include <deque>
#include <string>
#include <unordered_map>
#include <vector>

#include "ZVSmartZvg/Comp.h"
#include "ZVSmartZvg/Geo.h"
#include "model/element/OpenedBlock.h"
#include "model/element/ProgressPace.h"

namespace ZVSmartModel {

/// The digests of a block file's geometries: of each stored record, with the records that it
/// places by name in the place of their names. So shapes may be renamed without a difference.
///
/// A record is read once, whatever identifications lead to it. Takes memory for the identifications
/// and the names in the records, not for what they hold; both are charged to the block's budget.
class GeometryDigests {
  public:
    /// Reads every geometry that has an identification, block by block. Throws Error Damaged
    /// for one that cannot be read; Cancelled.
    GeometryDigests(OpenedBlock& block, ProgressPace& pace);

    /// The digest of all that a component's references lead to, in their order.
    ZVSmartZvg::u64 Of(const ZVSmartZvg::SZVLGZvgComp& comp);

  private:
    struct Stored {
        ZVSmartZvg::u64 digest = 0;  ///< first of the record alone, then of all it places
        std::vector<std::wstring> places;
        std::size_t met = 0;  ///< how many of these were looked at
        bool begun = false;
    };

    ZVSmartZvg::u64 Of(const std::wstring& name);
    void Resolve(const std::wstring& name);
    void Combine(Stored& stored);

    Budget& limits;
    std::deque<Stored> records;
    std::unordered_map<std::wstring, Stored*> storedByName;
};

}  // namespace ZVSmartModel
