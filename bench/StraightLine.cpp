#include "bench/StraightLine.h"

#include <cstring>

namespace bench {

namespace {

u32 Load32(const u8* at) {
    u32 value;
    std::memcpy(&value, at, sizeof value);
    return __builtin_bswap32(value);
}

u32 Take32(const u8*& at) {
    at += 4;
    return Load32(at - 4);
}

void TakeText(const u8*& at, std::wstring& text) {
    const u32 units = Take32(at);
    text.resize(units);
    wchar_t* const out = text.data();
    for (u32 i = 0; i < units; ++i) out[i] = at[2 * i] << 8 | at[2 * i + 1];
    at += 2 * std::size_t{units};
}

/// All keys of a generated building are names.
void TakeKey(const u8*& at, ZVSmartZvg::SerialKey& key) {
    TakeText(at, key.name);
}

/// A generated building's attributes are a colour or nothing.
void TakeAttr(const u8*& at, ZVSmartZvg::SZVLGZvgDisplayAttr& attr) {
    attr.flags = static_cast<ZVSmartZvg::u16>(at[0] << 8 | at[1]);
    at += 6;
    if ((attr.flags & 0x10) == 0) return;
    attr.red = at[0];
    attr.green = at[1];
    attr.blue = at[2];
    attr.alpha = at[3];
    at += 4;
}

/// Record `i` of the section at `section`.
const u8* Record(const u8* section, u32 i) {
    const u8* const table = section + Load32(section + 9);
    if (section[0] == 0) return section + table[i];
    if (section[0] == 0x40) return section + (table[2 * i] << 8 | table[2 * i + 1]);
    return section + Load32(table + 4 * i);
}

void TakeClassName(const u8*& at, std::wstring& name, u32& id) {
    TakeText(at, name);
    id = Take32(at);
}

void ReadClasses(const u8* index, u32 owner, const u32 (&rows)[4], SZVLGZvgComp& comp) {
    const u8* at = Record(index, rows[0]);
    TakeClassName(at, comp.classLevel2Name, comp.classLevel2Id);
    const u8* const level3 = at;
    at = Record(level3 + Load32(level3 + 1), rows[3]);
    TakeClassName(at, comp.classLevel2bName, comp.classLevel2bId);
    TakeAttr(at, comp.classLevel2bAttr);
    at = Record(level3, rows[1]);
    TakeClassName(at, comp.classLevel3Name, comp.classLevel3Id);
    at = Record(at, rows[2]);
    TakeClassName(at, comp.classLevel4Name, comp.classLevel4Id);
    TakeAttr(at, comp.classLevel4Attr);
    at = Record(at, owner);
    TakeKey(at, comp.ownerGuidName);
    TakeText(at, comp.ownerTextA);
}

}  // namespace

void ReadComponentStraight(const ParsedFloor& from, u32 i, SZVLGZvgComp& comp) {
    const u8* at = from.components[i];
    TakeKey(at, comp.compGuidName);
    ++at;  // the entry's flags: properties, owner and all classes
    comp.compProperties.resize(Take32(at));
    for (auto& [name, value] : comp.compProperties) {
        TakeText(at, name);
        TakeText(at, value);
    }
    const u32 owner = Take32(at);
    u32 rows[4];
    for (u32& row : rows) row = Take32(at);
    comp.geoRefs.resize(Take32(at));
    for (auto& reference : comp.geoRefs) {
        reference.refKind = *at++;
        reference.refValueA = Take32(at);
        reference.refValueB = Take32(at);
        reference.geoIds.resize(Take32(at));
        for (auto& row : reference.geoIds) {
            const u8* rowAt = from.geoIds[Take32(at)];
            TakeKey(rowAt, row.guidName);
            TakeText(rowAt, row.textA);
            TakeText(rowAt, row.textB);
        }
        at += 4;  // no materials
    }
    TakeAttr(at, comp.compAttr);
    comp.classLevel1Name = from.name;
    comp.classLevel1Id = from.order;
    ReadClasses(from.index.data(), owner, rows, comp);
}

bool SameComponent(const SZVLGZvgComp& a, const SZVLGZvgComp& b) {
    if (a.geoRefs.size() != b.geoRefs.size()) return false;
    for (std::size_t i = 0; i < a.geoRefs.size(); ++i) {
        const auto &x = a.geoRefs[i].geoIds, &y = b.geoRefs[i].geoIds;
        if (x.size() != y.size()) return false;
        for (std::size_t k = 0; k < x.size(); ++k)
            if (x[k].guidName != y[k].guidName) return false;
    }
    return a.compGuidName == b.compGuidName && a.compProperties == b.compProperties &&
           a.classLevel1Name == b.classLevel1Name && a.classLevel2Name == b.classLevel2Name &&
           a.classLevel2bName == b.classLevel2bName && a.classLevel3Name == b.classLevel3Name &&
           a.classLevel4Name == b.classLevel4Name && a.ownerGuidName == b.ownerGuidName &&
           a.ownerTextA == b.ownerTextA && a.compAttr.red == b.compAttr.red &&
           a.classLevel4Attr.blue == b.classLevel4Attr.blue;
}

}  // namespace bench
