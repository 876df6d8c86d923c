#pragma once

#include "ZVSmartZvg/CompView.h"
#include "layout/DisplayAttrFields.h"
#include "stream/MemoryBudget.h"

// A component entry:
//   GUID name   compGuidName
//   u8          entryFlags
//   properties  compProperties                             0x01
//   u32 count, GUID names  relatedGuidNames                0x02
//   GUID name   groupGuidName                              0x04
//   u32         row in the owner table                     0x08
//   u32         rows in the tables of levels 2, 3, 4, 2b   0x10, 0x20, 0x40, 0x80
//   u32 count, geometry references
//   attributes  compAttr                                   version 2 on
// A geometry reference:
//   u8, u32, u32  refKind, refValueA, refValueB
//   u32 count, u32s  rows in the floor's identification table
//   u32 count, materials                                   version 1 on
// A material: u32 key, GUID name, two texts, properties.
// An identification row: GUID name, two texts.
// An owner row: GUID name, text ownerTextA, u8 ownerFlags, text ownerTextB (0x40),
//   GUID name ownerSecondGuidName and text ownerTextC (0x80).
// A class row (ClassLevels.h) begins with its name and its u32 id; levels 4 and 2b go on with
//   attributes.
// A floor record begins with its name, its u32 order and two values of 8 bytes.

namespace ZVSmartZvg {

constexpr bool HasCompAttr(unsigned int version) {
    return version >= 2;
}
constexpr bool HasMaterials(unsigned int version) {
    return version != 0;
}

/// The rows that a component entry refers to.
using EntryRows = SZVLGCompRows;

/// Per geometry reference its rows in the floor's identification table.
using ReferenceRows = std::vector<std::vector<u32>>;

inline u8 EntryFlagsOf(const SZVLGZvgComp& comp, const EntryRows& rows) {
    u32 flags = 0;
    if (!comp.compProperties.empty()) flags |= 0x01;
    if (!comp.relatedGuidNames.empty()) flags |= 0x02;
    if (comp.groupGuidName.name != L"none") flags |= 0x04;
    if (rows.owner != ZVLG_NONE) flags |= 0x08;
    if (rows.level2 != ZVLG_NONE) flags |= 0x10;
    if (rows.level3 != ZVLG_NONE) flags |= 0x20;
    if (rows.level4 != ZVLG_NONE) flags |= 0x40;
    if (rows.level2b != ZVLG_NONE) flags |= 0x80;
    return static_cast<u8>(flags);
}

template <class Visitor, class Material>
void VisitMaterial(Visitor& visitor, Material& material) {
    visitor.Key(material.guidName);
    visitor.Text(material.textA);
    visitor.Text(material.textB);
    VisitProperties(visitor, material.properties);
}

/// The fewest bytes that a material takes.
constexpr u64 smallestMaterial = 4 + 6 + 12;

/// A map is no list: the two directions walk it each in their own way, and so may a visitor.
template <class Visitor, class Materials>
void VisitMaterials(Visitor& visitor, Materials& materials) {
    constexpr u64 mapNode = sizeof(SZVLGZvgMaterial) + ZVSmartFormat::perAllocation;
    if constexpr (requires { visitor.OwnMaterials(materials); }) {
        visitor.OwnMaterials(materials);
    } else if constexpr (Visitor::reading) {
        u32 count = visitor.Count(smallestMaterial);
        visitor.Charge(count, mapNode);
        for (; count != 0; --count) {
            u32 key = 0;
            SZVLGZvgMaterial material;
            visitor.U32(key);
            VisitMaterial(visitor, material);
            materials.emplace(key, std::move(material));
        }
    } else {
        visitor.Count(materials.size());
        visitor.Charge(materials.size(), mapNode);
        for (const auto& [key, material] : materials) {
            visitor.U32(key);
            VisitMaterial(visitor, material);
        }
    }
}

template <class Visitor, class Reference, class Rows>
void VisitGeoReference(Visitor& visitor, Reference& reference, Rows& rows, unsigned int version) {
    visitor.U8(reference.refKind);
    visitor.U32(reference.refValueA);
    visitor.U32(reference.refValueB);
    visitor.U32List(rows);
    if (HasMaterials(version)) VisitMaterials(visitor, reference.materials);
}

/// A visitor may have its own way of a component's properties.
template <class Visitor, class Properties>
void VisitOwnProperties(Visitor& visitor, Properties& properties) {
    if constexpr (requires { visitor.OwnProperties(properties); }) {
        visitor.OwnProperties(properties);
    } else {
        VisitProperties(visitor, properties);
    }
}

template <class Visitor, class Comp, class Rows, class RefRows>
void VisitComponentEntry(Visitor& visitor, Comp& comp, Rows& rows, RefRows& refRows,
                         unsigned int version) {
    visitor.Key(comp.compGuidName);
    u8 flags = 0;
    if constexpr (!Visitor::reading) flags = EntryFlagsOf(comp, rows);
    visitor.U8(flags);
    if (flags & 0x01) {
        VisitOwnProperties(visitor, comp.compProperties);
    } else if constexpr (requires { comp.compProperties.clear(); }) {
        comp.compProperties.clear();
    }
    if (flags & 0x02) visitor.List(comp.relatedGuidNames, 6, [&](auto& key) { visitor.Key(key); });
    if (flags & 0x04) visitor.Key(comp.groupGuidName);
    if (flags & 0x08) visitor.U32(rows.owner);
    if (flags & 0x10) visitor.U32(rows.level2);
    if (flags & 0x20) visitor.U32(rows.level3);
    if (flags & 0x40) visitor.U32(rows.level4);
    if (flags & 0x80) visitor.U32(rows.level2b);

    const u64 smallestReference = 13 + (HasMaterials(version) ? 4 : 0);
    constexpr u64 growing = 3;  // elements that a growing vector holds at once, per element
    std::size_t i = 0;
    visitor.List(comp.geoRefs, smallestReference, [&](auto& reference) {
        visitor.Charge(1, growing * sizeof(std::vector<u32>));
        if constexpr (Visitor::reading) refRows.emplace_back();
        VisitGeoReference(visitor, reference, refRows[i++], version);
    });
    if (HasCompAttr(version)) VisitDisplayAttr(visitor, comp.compAttr, version);
}

template <class Visitor, class Row>
void VisitGeoIdRow(Visitor& visitor, Row& row) {
    visitor.Key(row.guidName);
    visitor.Text(row.textA);
    visitor.Text(row.textB);
}

inline u8 OwnerFlagsOf(const SZVLGZvgComp& comp) {
    const bool hasSecond = comp.ownerSecondGuidName != SerialKey() || !comp.ownerTextC.empty();
    return static_cast<u8>((comp.ownerTextB.empty() ? 0 : 0x40) | (hasSecond ? 0x80 : 0));
}

template <class Visitor, class Comp>
void VisitOwnerRow(Visitor& visitor, Comp& comp) {
    visitor.Key(comp.ownerGuidName);
    visitor.Text(comp.ownerTextA);
    u8 flags = 0;
    if constexpr (!Visitor::reading) flags = OwnerFlagsOf(comp);
    visitor.U8(flags);
    if (flags & 0x40) visitor.Text(comp.ownerTextB);
    if ((flags & 0x80) == 0) return;
    visitor.Key(comp.ownerSecondGuidName);
    visitor.Text(comp.ownerTextC);
}

template <class Visitor, class Comp>
void VisitFloorFields(Visitor& visitor, Comp& comp) {
    visitor.Text(comp.classLevel1Name);
    visitor.U32(comp.classLevel1Id);
    visitor.U64(comp.classLevel1DataA);
    visitor.U64(comp.classLevel1DataB);
}

}  // namespace ZVSmartZvg
