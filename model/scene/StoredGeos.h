#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

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

  private:
    OpenedBlock& block;
    /// Filled when first asked.
    std::optional<std::unordered_map<std::wstring, std::uint64_t>> places;
};

}  // namespace ZVSmartModel
