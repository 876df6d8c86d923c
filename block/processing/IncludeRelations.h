#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "ZVSmartZvg/Geo.h"
#include "ZVSmartZvg/ParamFace.h"
#include "processing/DerivedFace.h"
#include "processing/IncludeTable.h"

namespace ZVSmartZvg {

/// The part of one saver that makes up keys: for geometries that the caller includes elsewhere,
/// and for the shapes that parametric faces share.
///
/// Where storing throws, the exception passes; tables and `rel` are then as before, and the
/// number that was taken is lost.
class IncludeRelations {
  public:
    /// Stores a geometry under a key, as CZVLGBlockSaver::AddIdentificationGeo does.
    using StoreGeo = std::function<void(const std::wstring& key, const SZVLGZvgGeo& geo)>;

    explicit IncludeRelations(StoreGeo store);

    /// Stores `geo` under the next key and returns that: "mater_include_key_" and a decimal
    /// number, 0 first, formatted as a signed one: it turns negative behind 2147483647.
    std::wstring CreateIncludeBlockGeo(const SZVLGZvgGeo& geo);

    /// Each finds or stores the geometry that `face` shares with others of its shape. False for
    /// a face that is refused: nothing is stored, no number is taken and `rel` is unchanged, but
    /// for the transform of a revolved face too short to sample.
    bool RelateCylinderFace(const SZVLGParamCylinderFace& face, SZVLGZvgGeoRelInclude& rel);
    bool RelateRevolvedFace(const SZVLGParamRevolvedFace& face, SZVLGZvgGeoRelInclude& rel);
    bool RelateRuledFace(const SZVLGParamRuledFace& face, SZVLGZvgGeoRelInclude& rel);

  private:
    template <class Key>
    void Relate(IncludeTable<Key>& table, DerivedFace<Key> derived, SZVLGZvgGeoRelInclude& rel);

    StoreGeo store;
    std::uint32_t nextNumber = 0;
    IncludeTable<CylinderKey> cylinders;
    IncludeTable<RevolvedKey> revolved;
    IncludeTable<RuledKey> ruled;
};

}  // namespace ZVSmartZvg
