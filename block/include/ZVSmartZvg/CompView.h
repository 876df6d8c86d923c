#pragma once

#include <utility>
#include <vector>

#include "ZVSmartZvg/Comp.h"

namespace ZVSmartZvg {

/// A text where it lies in a decoded block.
struct SZVLGTextView {
    const u8* units = nullptr;  ///< UTF-16, the higher byte of each unit first
    u32 unitCount = 0;          ///< of two bytes each

    /// Whether it has no units.
    bool empty() const { return unitCount == 0; }  // NOLINT(readability-identifier-naming)
};

/// A GUID name; its GUID is stored only where the name is empty.
struct SZVLGKeyView {
    SZVLGTextView name;  ///< without units of its own, not even none, where there is no key
    SerialGuid guid;     ///< all zero where the name is not empty
};

/// The name and the value of a property.
using SZVLGPropertyView = std::pair<SZVLGTextView, SZVLGTextView>;

/// Some of a list that is kept for a whole component.
struct SZVLGViewRange {
    u32 first = 0;  ///< the first one's number
    u32 count = 0;  ///< how many there are
};

/// See SZVLGZvgMaterial.
struct SZVLGMaterialView {
    u32 key = 0;            ///< of the host's own
    SZVLGKeyView guidName;  ///< the material's identity, to the host
    /// Texts of the host's own.
    /// @{
    SZVLGTextView textA, textB;
    /// @}
    SZVLGViewRange properties;  ///< of SZVLGCompView::properties
};

/// See SZVLGZvgGeoId.
struct SZVLGGeoIdView {
    SZVLGKeyView guidName;  ///< names its geometry
    /// Texts of the host's own.
    /// @{
    SZVLGTextView textA, textB;
    /// @}
};

/// See SZVLGZvgCompGeoRef.
struct SZVLGCompGeoRefView {
    u8 refKind = 0;            ///< the host's own
    u32 refValueA = 0;         ///< the host's own
    u32 refValueB = 0;         ///< the host's own
    SZVLGViewRange materials;  ///< of SZVLGCompView::materials, by ascending keys
    SZVLGViewRange geoIds;     ///< of SZVLGCompView::geoIds
};

/// Where a component's classes and its owner stand in the file's tables; ZVLG_NONE for none.
/// Components whose numbers agree have the same classes and owner.
struct SZVLGCompRows {
    u32 owner = ZVLG_NONE;    ///< `ownerGuidName` and the texts of the owner
    u32 level2 = ZVLG_NONE;   ///< `classLevel2Name` and its id
    u32 level3 = ZVLG_NONE;   ///< `classLevel3Name` and its id
    u32 level4 = ZVLG_NONE;   ///< `classLevel4Name`, its id and attributes
    u32 level2b = ZVLG_NONE;  ///< `classLevel2bName`, its id and attributes
};

/// A component in place: its texts are looked at where its floor was decoded, and nothing is copied
/// but numbers. What stands in tables for many components is told by its rows alone; a component of
/// the same rows that is read whole has it. One view that is read into again takes no memory anew.
struct SZVLGCompView {
    SZVLGKeyView compGuidName;                   ///< the component's identity within its floor
    std::vector<SZVLGKeyView> relatedGuidNames;  ///< other components it belongs to
    SZVLGKeyView groupGuidName;                  ///< no key where none is stored
    SZVLGCompRows rows;                          ///< its classes and its owner
    SZVLGViewRange compProperties;               ///< of `properties`
    std::vector<SZVLGCompGeoRefView> geoRefs;    ///< the parts of its body
    SZVLGZvgDisplayAttr compAttr;                ///< how it looks itself
    std::vector<SZVLGPropertyView> properties;   ///< its own and those of its materials
    std::vector<SZVLGMaterialView> materials;    ///< of all its parts
    std::vector<SZVLGGeoIdView> geoIds;          ///< of all its parts
    /// The bytes that were passed to read it; told also where they turn out to be damaged.
    u64 byteCount = 0;
};

}  // namespace ZVSmartZvg
