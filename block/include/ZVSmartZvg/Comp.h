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
    SerialKey guidName;  ///< the material's identity, to the host
    /// Texts of the host's own.
    /// @{
    std::wstring textA, textB;
    /// @}
    PropertyList properties;  ///< the host's own
};

/// A row that leads from a component to a stored geometry; rows are shared within a floor. Two
/// rows are one where their GUIDs agree and are not all zero, else where their names and both
/// texts agree. Of rows that are one the first is stored; the name and texts of the others are
/// dropped, and their components get the first one's.
struct SZVLGZvgGeoId {
    SerialKey guidName;  ///< identifies the row within its floor, and names its geometry
    /// Texts of the host's own; where the GUID is all zero, they identify the row with the name.
    /// @{
    std::wstring textA, textB;
    /// @}
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
    std::wstring geoIdentification;             ///< where `geo` is, or is to be, stored
    SZVLGZvgGeo geo;                            ///< the geometry, or nothing
    u8 refKind = 0;                             ///< the host's own
    u32 refValueA = 0;                          ///< the host's own
    u32 refValueB = 0;                          ///< the host's own
    std::map<u32, SZVLGZvgMaterial> materials;  ///< by keys of the host's own
    std::vector<SZVLGZvgGeoId> geoIds;          ///< the rows that lead to this part's geometry
};

/// One building component.
///
/// The names of floor and classes, their ids and attributes and the owner group go into shared
/// tables, where the first component that brings a name fixes what is stored for it; what later
/// ones bring for that name is dropped. Components of a floor, and owner groups below a level 4,
/// are told apart by their GUID where it is not all zero, else by their name; of components that
/// are one the first is stored and the others are dropped, their geometries included.
struct SZVLGZvgComp {
    std::wstring classLevel1Name;  ///< the floor's name
    u32 classLevel1Id = 0;         ///< the floor's order
    u64 classLevel1DataA = 0;      ///< the host's own
    u64 classLevel1DataB = 0;      ///< the host's own

    SerialKey ownerGuidName;        ///< identifies the owner group below its level 4
    std::wstring ownerTextA;        ///< the host's own
    std::wstring ownerTextB;        ///< the host's own
    SerialKey ownerSecondGuidName;  ///< the host's own
    std::wstring ownerTextC;        ///< the host's own

    std::wstring classLevel2Name;          ///< what the host sorts components by first
    u32 classLevel2Id = 0;                 ///< the host's own
    std::wstring classLevel3Name;          ///< a class below its level 2
    u32 classLevel3Id = 0;                 ///< the host's own
    std::wstring classLevel4Name;          ///< a class below its level 3
    u32 classLevel4Id = 0;                 ///< the host's own
    SZVLGZvgDisplayAttr classLevel4Attr;   ///< how components of that level 4 look
    std::wstring classLevel2bName;         ///< a second class below its level 2, beside level 3
    u32 classLevel2bId = 0;                ///< the host's own
    SZVLGZvgDisplayAttr classLevel2bAttr;  ///< how components of that level 2b look

    SerialKey compGuidName;                   ///< the component's identity within its floor
    std::vector<SerialKey> relatedGuidNames;  ///< other components it belongs to
    SerialKey groupGuidName;                  ///< stored unless its name is "none"
    PropertyList compProperties;              ///< the component's properties
    std::vector<SZVLGZvgCompGeoRef> geoRefs;  ///< the parts of its body
    SZVLGZvgDisplayAttr compAttr;  ///< how it looks itself; stored from format version 2 on
};

/// Which of its properties are read with a component; all of them unless it says otherwise.
struct SZVLGCompParts {
    bool properties = true;  ///< else `compProperties` is read as empty
    /// Unless this is empty only properties whose names end with it are read, and with each of them
    /// the one behind it, in which a host may say more of it.
    std::wstring propertyNameEnd;
};

}  // namespace ZVSmartZvg
