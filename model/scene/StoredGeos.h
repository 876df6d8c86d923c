#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "ZVSmartZvg/Geo.h"
#include "model/element/OpenedBlock.h"

namespace ZVSmartModel {

/// Where geometries are stored, by their identifications. Names may be the host's own, and lead
/// nowhere rightly.
class StoredGeos {
  public:
    /// `block` is borrowed.
    explicit StoredGeos(OpenedBlock& block) : block(block) {}

    /// The place of a geometry, one number for each; none where the file holds no such name.
    /// Several names may lead to one place.
    std::optional<std::uint64_t> Find(const std::wstring& identification);

    /// Reads into `geo`, which is fresh, what is at `place`. Throws Error Damaged where it
    /// cannot be read.
    void Read(std::uint64_t place, ZVSmartZvg::SZVLGZvgGeo& geo);

    /// Of places whose geometry was read and places no others.
    /// @{
    void NotePlain(std::uint64_t place) { plain.insert(place); }
    bool IsPlain(std::uint64_t place) const { return plain.contains(place); }
    /// @}

  private:
    void Fill();

    OpenedBlock& block;
    /// A hash table of identifications by their numbers in the file, each at the first free slot
    /// from that of its name on: a large file has hundreds of thousands, and the file holds their
    /// names already. Empty until something is sought; a power of two, at most two thirds full.
    std::vector<std::uint32_t> slots;
    std::wstring name;  ///< of a candidate; one text for all is faster
    std::unordered_set<std::uint64_t> plain;
};

}  // namespace ZVSmartModel
