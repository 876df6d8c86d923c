#pragma once

#include <string>
#include <utility>
#include <vector>

#include "ZVIM/Transf.h"
#include "ZVSmartFormat/Stream.h"
#include "ZVSmartZvg/Export.h"

namespace ZVSmartZvg {

using ZVIM::GeometryPrimitiveResource::CZVIMTransf;
using ZVSmartFormat::u16;
using ZVSmartFormat::u32;
using ZVSmartFormat::u64;
using ZVSmartFormat::u8;

/// (name, value) pairs, in the order they were given.
using PropertyList = std::vector<std::pair<std::wstring, std::wstring>>;

/// The bits of `SZVLGZvgDisplayAttr::flags`, each by the field that it stores.
namespace DisplayAttrFlag {

constexpr u16 colour = 0x10;       ///< `red`, `green`, `blue`; from format version 2 on `alpha` too
constexpr u16 earlyAlpha = 0x20;   ///< `alpha` before format version 2; no meaning later
constexpr u16 zBufferSize = 0x40;  ///< `zBufferSize`
constexpr u16 styleName = 0x80;    ///< `styleName`
constexpr u16 line = 0x200;        ///< `lineValue` and `lineByte`
constexpr u16 extraByte = 0x400;   ///< `extraByte`
constexpr u16 transf = 0x4000;     ///< `transf`
constexpr u16 properties = 0x8000;  ///< `properties`

}  // namespace DisplayAttrFlag

/// The bits of `SZVLGZvgDisplayAttr::flags2`, the same from format version 3 on.
namespace DisplayAttrFlag2 {

constexpr u32 secondColour = 1U << 17;  ///< `red2`, `green2`, `blue2`, `alpha2`
constexpr u32 name2 = 1U << 18;         ///< `name2`
constexpr u32 real1 = 1U << 19;         ///< `real1`
constexpr u32 real2 = 1U << 20;         ///< `real2`
constexpr u32 real3 = 1U << 21;         ///< `real3`
constexpr u32 real4 = 1U << 22;         ///< `real4`
constexpr u32 real5 = 1U << 23;         ///< `real5`
constexpr u32 name3 = 1U << 27;         ///< `name3`
constexpr u32 fill = 1U << 28;          ///< the fill's colour, `fillReal`, `fillName`
constexpr u32 hatch = 1U << 29;         ///< `hatchReal`, `hatchName`
constexpr u32 real6 = 1U << 30;         ///< `real6`
constexpr u32 last32 = 1U << 31;        ///< `last32`

}  // namespace DisplayAttrFlag2

/// Display attributes. The bits of `flags` and `flags2` are the caller's: they say which fields
/// are stored (DisplayAttrFlag, DisplayAttrFlag2), and a field whose bit is clear comes back at its
/// default. `flags2` and everything
/// below it exist from format version 3 on. What the fields mean beyond their names is the host's.
struct SZVLGZvgDisplayAttr {
    u16 flags = 0;  ///< which of the fields down to `properties` are stored
    /// Colour, 0 to 255; flags 0x10.
    /// @{
    u8 red = 0, green = 0, blue = 0;
    /// @}
    u8 alpha = 0xFF;          ///< 0xFF is opaque; flags 0x10, before version 2 flags 0x20
    u32 zBufferSize = 0;      ///< a drawing order; flags 0x40
    std::wstring styleName;   ///< flags 0x80
    u32 lineValue = 0;        ///< flags 0x200
    u8 lineByte = 0;          ///< flags 0x200
    u8 extraByte = 0;         ///< flags 0x400
    CZVIMTransf transf;       ///< flags 0x4000
    PropertyList properties;  ///< flags 0x8000

    u32 flags2 = 0;  ///< which of the fields below are stored
    /// A second colour; flags2 bit 17.
    /// @{
    u8 red2 = 0, green2 = 0, blue2 = 0;
    /// @}
    u8 alpha2 = 0xFF;    ///< flags2 bit 17
    std::wstring name2;  ///< flags2 bit 18
    double real1 = 0;    ///< flags2 bit 19
    double real2 = 0;    ///< flags2 bit 20
    double real3 = 0;    ///< flags2 bit 21
    double real4 = 0;    ///< flags2 bit 22
    double real5 = 0;    ///< flags2 bit 23
    std::wstring name3;  ///< flags2 bit 27
    /// The fill's colour; flags2 bit 28.
    /// @{
    u8 fillRed = 0, fillGreen = 0, fillBlue = 0, fillAlpha = 0;
    /// @}
    double fillReal = 0;     ///< flags2 bit 28
    std::wstring fillName;   ///< flags2 bit 28
    double hatchReal = 0;    ///< flags2 bit 29
    std::wstring hatchName;  ///< flags2 bit 29
    double real6 = 0;        ///< flags2 bit 30
    u32 last32 = 0;          ///< flags2 bit 31
};

}  // namespace ZVSmartZvg
