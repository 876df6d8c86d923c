#pragma once

#include <map>
#include <string>
#include <vector>

#include "ZVSmartSerial/Serial.h"
#include "ZVSmartZvg/DisplayAttr.h"
#include "ZVSmartZvg/Export.h"
#include "ZVSmartZvg/Geo.h"

namespace ZVSmartZvg {

using ZVSmartSerial::SerialGuid;
using ZVSmartSerial::SerialKey;

/// A material of a geometry reference; stored from format version 1 on.
struct SZVLGZvgMaterial {
    SerialKey guidName;
    std::wstring textA, textB;
    PropertyList properties;
};

/// A row that leads from a component to a stored geometry; rows are shared within a floor.
struct SZVLGZvgGeoId {
    SerialKey guidName;
    std::wstring textA, textB;
};

/// The identification under which a row's geometry is stored: its name, unless that is empty
/// (then its GUID, as 8-4-4-4-12 upper-case hexadecimal digits) or "none" (then `textA`).
ZVLG_API std::wstring GetGeoIdentification(const SZVLGZvgGeoId& row);

/// One part of a component's body.
///
/// Writing: where `geoIdentification` is not empty and `geo` holds anything, the geometry is
/// stored under it unless that identification is there already; an empty `geo` only refers. If
/// none of `geoIds` leads to `geoIdentification`, a row that does is added in the file.
/// Reading: `geoIdentification` and `geo` stay empty, `geoIds` holds the rows.
struct SZVLGZvgCompGeoRef {
    std::wstring geoIdentification;
    SZVLGZvgGeo geo;
    u8 refKind = 0;
    u32 refValueA = 0;
    u32 refValueB = 0;
    std::map<u32, SZVLGZvgMaterial> materials;
    std::vector<SZVLGZvgGeoId> geoIds;
};

/// One building component.
///
/// The names of floor and classes, their ids and attributes and the owner group go into shared
/// tables, where the first component that brings a name fixes what is stored for it.
struct SZVLGZvgComp {
    std::wstring classLevel1Name;  ///< the floor's name
    u32 classLevel1Id = 0;         ///< the floor's order
    u64 classLevel1DataA = 0;      ///< the host's own
    u64 classLevel1DataB = 0;      ///< the host's own

    SerialKey ownerGuidName;
    std::wstring ownerTextA;
    std::wstring ownerTextB;
    SerialKey ownerSecondGuidName;
    std::wstring ownerTextC;

    std::wstring classLevel2Name;
    u32 classLevel2Id = 0;
    std::wstring classLevel3Name;
    u32 classLevel3Id = 0;
    std::wstring classLevel4Name;
    u32 classLevel4Id = 0;
    SZVLGZvgDisplayAttr classLevel4Attr;
    std::wstring classLevel2bName;
    u32 classLevel2bId = 0;
    SZVLGZvgDisplayAttr classLevel2bAttr;

    SerialKey compGuidName;                   ///< the component's identity within its floor
    std::vector<SerialKey> relatedGuidNames;  ///< other components it belongs to
    SerialKey groupGuidName;                  ///< stored unless its name is "none"
    PropertyList compProperties;
    std::vector<SZVLGZvgCompGeoRef> geoRefs;
    SZVLGZvgDisplayAttr compAttr;  ///< stored from format version 2 on
};

}  // namespace ZVSmartZvg
