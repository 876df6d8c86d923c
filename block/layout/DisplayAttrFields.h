#pragma once

#include "ZVSmartZvg/DisplayAttr.h"

// Display attributes in a file, in this order. `flags` and `flags2` are the caller's.
//   u16  flags
//   u32  flags2                                version 3 on
//   4 u8 red, green, blue, alpha               0x10, version 2 on
//   3 u8 red, green, blue                      0x10, before version 2
//   u32  its low byte is alpha                 0x20, before version 2
//   u32  zBufferSize                           0x40
//   text styleName                             0x80
//   u32, u8  lineValue, lineByte               0x200
//   u8   extraByte                             0x400
//   u32, 12 f64  serial version, transf        0x4000
//   properties                                 0x8000
// and from version 3 on, by the bits of flags2:
//   4 u8 red2, green2, blue2, alpha2           17
//   text name2                                 18
//   f64  real1 to real5                        19 to 23
//   text name3                                 27
//   4 u8, f64, text  fill                      28
//   f64, text  hatch                           29
//   f64  real6                                 30
//   u32  last32                                31
// Properties are a u32 count and per property its name and its value as texts.

namespace ZVSmartZvg {

constexpr bool HasFlags2(unsigned int version) {
    return version > 2;
}
constexpr bool HasAlphaWithColour(unsigned int version) {
    return version >= 2;
}

/// The fewest bytes that display attributes take.
constexpr u64 SmallestDisplayAttr(unsigned int version) {
    return HasFlags2(version) ? 6 : 2;
}

template <class Visitor, class Properties>
void VisitProperties(Visitor& visitor, Properties& properties) {
    visitor.List(properties, 8, [&visitor](auto& property) {
        visitor.Text(property.first);
        visitor.Text(property.second);
    });
}

/// Before version 2 alpha stands apart from the colour, and an alpha of its own implies one.
template <class Visitor, class Attr>
void VisitEarlyColour(Visitor& visitor, Attr& attr) {
    constexpr u8 opaque = 0xFF;
    if (attr.flags & DisplayAttrFlag::colour) {
        visitor.U8(attr.red);
        visitor.U8(attr.green);
        visitor.U8(attr.blue);
    }
    if ((attr.flags & DisplayAttrFlag::earlyAlpha) == 0) return;
    u32 value = attr.alpha;
    visitor.U32(value);
    if constexpr (Visitor::reading) {
        attr.alpha = static_cast<u8>(value);
        if (attr.alpha != opaque) attr.flags |= DisplayAttrFlag::colour;
    }
}

template <class Visitor, class Attr>
void VisitDisplayAttrExtension(Visitor& visitor, Attr& attr) {
    namespace Flag = DisplayAttrFlag2;
    const auto has = [&attr](u32 flag) { return (attr.flags2 & flag) != 0; };
    if (has(Flag::secondColour)) {
        visitor.U8(attr.red2);
        visitor.U8(attr.green2);
        visitor.U8(attr.blue2);
        visitor.U8(attr.alpha2);
    }
    if (has(Flag::name2)) visitor.Text(attr.name2);
    if (has(Flag::real1)) visitor.F64(attr.real1);
    if (has(Flag::real2)) visitor.F64(attr.real2);
    if (has(Flag::real3)) visitor.F64(attr.real3);
    if (has(Flag::real4)) visitor.F64(attr.real4);
    if (has(Flag::real5)) visitor.F64(attr.real5);
    if (has(Flag::name3)) visitor.Text(attr.name3);
    if (has(Flag::fill)) {
        visitor.U8(attr.fillRed);
        visitor.U8(attr.fillGreen);
        visitor.U8(attr.fillBlue);
        visitor.U8(attr.fillAlpha);
        visitor.F64(attr.fillReal);
        visitor.Text(attr.fillName);
    }
    if (has(Flag::hatch)) {
        visitor.F64(attr.hatchReal);
        visitor.Text(attr.hatchName);
    }
    if (has(Flag::real6)) visitor.F64(attr.real6);
    if (has(Flag::last32)) visitor.U32(attr.last32);
}

template <class Visitor, class Attr>
void VisitDisplayAttr(Visitor& visitor, Attr& attr, unsigned int version) {
    visitor.U16(attr.flags);
    if (HasFlags2(version)) visitor.U32(attr.flags2);
    if (!HasAlphaWithColour(version)) {
        VisitEarlyColour(visitor, attr);
    } else if (attr.flags & DisplayAttrFlag::colour) {
        visitor.U8(attr.red);
        visitor.U8(attr.green);
        visitor.U8(attr.blue);
        visitor.U8(attr.alpha);
    }
    if (attr.flags & DisplayAttrFlag::zBufferSize) visitor.U32(attr.zBufferSize);
    if (attr.flags & DisplayAttrFlag::styleName) visitor.Text(attr.styleName);
    if (attr.flags & DisplayAttrFlag::line) {
        visitor.U32(attr.lineValue);
        visitor.U8(attr.lineByte);
    }
    if (attr.flags & DisplayAttrFlag::extraByte) visitor.U8(attr.extraByte);
    if (attr.flags & DisplayAttrFlag::transf) visitor.Versioned(attr.transf);
    if (attr.flags & DisplayAttrFlag::properties) VisitProperties(visitor, attr.properties);
    if (HasFlags2(version)) VisitDisplayAttrExtension(visitor, attr);
}

}  // namespace ZVSmartZvg
