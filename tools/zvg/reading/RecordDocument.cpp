#include "tools/zvg/reading/RecordDocument.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <initializer_list>

#include "model/element/PropertyKinds.h"
#include "model/element/RecordNames.h"
#include "model/element/Utf8.h"

namespace ZVSmartModel::Tool {

using namespace ZVSmartZvg;

namespace {

Document ColourDocument(std::initializer_list<u8> channels) {
    std::string text = "#";
    for (const u8 channel : channels) text += HexNumber(channel, 2).get<std::string>().substr(2);
    return text;
}

Document KeyDocument(const SerialKey& key) {
    if (key.name.empty()) return {{"guid", GuidText(key.guid)}};
    return {{"name", ToUtf8(key.name)}};
}

Document ClassDocument(const std::wstring& name, u32 id) {
    return {{"name", ToUtf8(name)}, {"id", id}};
}

Document ClassDocument(const std::wstring& name, u32 id, const SZVLGZvgDisplayAttr& attr) {
    return {{"name", ToUtf8(name)}, {"id", id}, {"attr", DisplayAttrDocument(attr)}};
}

void AddFirstFields(Document& document, const SZVLGZvgDisplayAttr& attr) {
    if (attr.flags & 0x10) {
        document["colour"] = ColourDocument({attr.red, attr.green, attr.blue, attr.alpha});
    }
    if (attr.flags & 0x40) document["zBufferSize"] = attr.zBufferSize;
    if (attr.flags & 0x80) document["styleName"] = ToUtf8(attr.styleName);
    if (attr.flags & 0x200) {
        document["lineValue"] = attr.lineValue;
        document["lineByte"] = attr.lineByte;
    }
    if (attr.flags & 0x400) document["extraByte"] = attr.extraByte;
    if (attr.flags & 0x4000) document["transf"] = TransfDocument(attr.transf);
    if (attr.flags & 0x8000) document["properties"] = PropertiesDocument(attr.properties);
}

void AddSecondFields(Document& document, const SZVLGZvgDisplayAttr& attr) {
    const auto has = [&attr](int bit) { return (attr.flags2 >> bit & 1U) != 0; };
    if (has(17)) {
        document["colour2"] = ColourDocument({attr.red2, attr.green2, attr.blue2, attr.alpha2});
    }
    if (has(18)) document["name2"] = ToUtf8(attr.name2);
    if (has(19)) document["real1"] = RealNumber(attr.real1);
    if (has(20)) document["real2"] = RealNumber(attr.real2);
    if (has(21)) document["real3"] = RealNumber(attr.real3);
    if (has(22)) document["real4"] = RealNumber(attr.real4);
    if (has(23)) document["real5"] = RealNumber(attr.real5);
    if (has(27)) document["name3"] = ToUtf8(attr.name3);
    if (has(28)) {
        document["fill"] = {{"colour", ColourDocument({attr.fillRed, attr.fillGreen, attr.fillBlue,
                                                       attr.fillAlpha})},
                            {"real", RealNumber(attr.fillReal)},
                            {"name", ToUtf8(attr.fillName)}};
    }
    if (has(29)) {
        document["hatch"] = {{"real", RealNumber(attr.hatchReal)},
                             {"name", ToUtf8(attr.hatchName)}};
    }
    if (has(30)) document["real6"] = RealNumber(attr.real6);
    if (has(31)) document["last32"] = attr.last32;
}

Document MaterialsDocument(const std::map<u32, SZVLGZvgMaterial>& materials) {
    Document list = Document::array();
    for (const auto& [key, material] : materials) {
        list.push_back({{"key", key},
                        {"guidName", KeyDocument(material.guidName)},
                        {"textA", ToUtf8(material.textA)},
                        {"textB", ToUtf8(material.textB)},
                        {"properties", PropertiesDocument(material.properties)}});
    }
    return list;
}

Document GeoIdsDocument(const std::vector<SZVLGZvgGeoId>& rows) {
    Document list = Document::array();
    for (const SZVLGZvgGeoId& row : rows) {
        list.push_back({{"guidName", KeyDocument(row.guidName)},
                        {"textA", ToUtf8(row.textA)},
                        {"textB", ToUtf8(row.textB)},
                        {"geoIdentification", ToUtf8(GetGeoIdentification(row))}});
    }
    return list;
}

Document GeoRefDocument(const SZVLGZvgCompGeoRef& reference) {
    return {{"refKind", reference.refKind},
            {"refValueA", reference.refValueA},
            {"refValueB", reference.refValueB},
            {"materials", MaterialsDocument(reference.materials)},
            {"geoIds", GeoIdsDocument(reference.geoIds)}};
}

Document OwnerDocument(const SZVLGZvgComp& comp) {
    return {{"guidName", KeyDocument(comp.ownerGuidName)},
            {"textA", ToUtf8(comp.ownerTextA)},
            {"textB", ToUtf8(comp.ownerTextB)},
            {"secondGuidName", KeyDocument(comp.ownerSecondGuidName)},
            {"textC", ToUtf8(comp.ownerTextC)}};
}

}  // namespace

Document EightBytesDocument(u64 value) {
    return {{"bits", HexNumber(value, 16)}, {"asReal", RealNumber(std::bit_cast<double>(value))}};
}

Document TransfDocument(const CZVIMTransf& transf) {
    Document rows = Document::array();
    for (int row = 0; row < 3; ++row) {
        Document numbers = Document::array();
        for (int column = 0; column < 4; ++column) {
            numbers.push_back(RealNumber(transf.GetAt(row, column)));
        }
        rows.push_back(numbers);
    }
    return rows;
}

Document PropertiesDocument(const PropertyList& properties) {
    Document list = Document::array();
    for (const StoredProperty& property : PropertiesOfPairs(properties)) {
        Document& entry = list.emplace_back();
        entry["name"] = ToUtf8(property.name);
        entry["value"] = ToUtf8(property.value);
        if (property.kind != textKind) entry["kind"] = ToUtf8(property.kind);
        if (!property.unit.empty()) entry["unit"] = ToUtf8(property.unit);
    }
    return list;
}

Document DisplayAttrDocument(const SZVLGZvgDisplayAttr& attr) {
    Document document = {{"flags", HexNumber(attr.flags, 4)},
                         {"flags2", HexNumber(attr.flags2, 8)}};
    AddFirstFields(document, attr);
    AddSecondFields(document, attr);
    return document;
}

Document CompDocument(const SZVLGZvgComp& comp) {
    Document document;
    document["classLevel1"] = {{"name", ToUtf8(comp.classLevel1Name)},
                               {"id", comp.classLevel1Id},
                               {"dataA", EightBytesDocument(comp.classLevel1DataA)},
                               {"dataB", EightBytesDocument(comp.classLevel1DataB)}};
    document["classLevel2"] = ClassDocument(comp.classLevel2Name, comp.classLevel2Id);
    document["classLevel3"] = ClassDocument(comp.classLevel3Name, comp.classLevel3Id);
    document["classLevel4"] =
        ClassDocument(comp.classLevel4Name, comp.classLevel4Id, comp.classLevel4Attr);
    document["classLevel2b"] =
        ClassDocument(comp.classLevel2bName, comp.classLevel2bId, comp.classLevel2bAttr);
    document["owner"] = OwnerDocument(comp);
    document["compGuidName"] = KeyDocument(comp.compGuidName);
    document["groupGuidName"] = KeyDocument(comp.groupGuidName);
    document["relatedGuidNames"] = Document::array();
    for (const SerialKey& key : comp.relatedGuidNames) {
        document["relatedGuidNames"].push_back(KeyDocument(key));
    }
    document["compAttr"] = DisplayAttrDocument(comp.compAttr);
    document["compProperties"] = PropertiesDocument(comp.compProperties);
    document["geoRefs"] = Document::array();
    for (const SZVLGZvgCompGeoRef& reference : comp.geoRefs) {
        document["geoRefs"].push_back(GeoRefDocument(reference));
    }
    return document;
}

}  // namespace ZVSmartModel::Tool
