#include "model/element/ElementReader.h"

#include <algorithm>
#include <utility>

#include "model/element/ElementRecord.h"
#include "model/element/PropertyKinds.h"
#include "model/element/RecordNames.h"
#include "model/element/Utf8.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

constexpr std::string_view noKind = "text";

}  // namespace

std::size_t ElementReader::RowsHash::operator()(const SZVLGCompRows& rows) const {
    std::uint64_t hash = 0;
    for (const u32 row : {rows.owner, rows.level2, rows.level3, rows.level4, rows.level2b}) {
        hash = (hash ^ row) * 0x9E3779B97F4A7C15;
        hash ^= hash >> 29;
    }
    return static_cast<std::size_t>(hash);
}

bool ElementReader::RowsEqual::operator()(const SZVLGCompRows& a, const SZVLGCompRows& b) const {
    return a.owner == b.owner && a.level2 == b.level2 && a.level3 == b.level3 &&
           a.level4 == b.level4 && a.level2b == b.level2b;
}

ElementView* ElementReader::Read(OpenedBlock& block, ElementIndex index) {
    const SZVLGCompIndex place = {index.floor, index.position};
    if (!block.ReadView(place, wants.parts, stored)) return nullptr;
    common = CommonOf(block, place);
    if (common == nullptr) return nullptr;
    element.index = index;
    element.className = common->className;
    element.predefinedType = common->predefinedType;
    element.typeName = common->typeName;
    element.materialName = common->materialName;
    element.buildingName = common->buildingName;
    element.siteName = common->siteName;
    element.colour = ColourOf(stored.compAttr);
    if (!element.colour) element.colour = common->colour;
    Fill();
    return &element;
}

Look ElementReader::OwnLook() const {
    if (ColourOf(stored.compAttr)) return LookOf(stored.compAttr, common->materialName);
    return common->look.value_or(Look());
}

/// Null where they cannot be read.
const ElementReader::Common* ElementReader::CommonOf(OpenedBlock& block,
                                                     const SZVLGCompIndex& index) {
    if (lastCommon != nullptr && RowsEqual()(lastRows, stored.rows)) return lastCommon;
    const auto known = commons.find(stored.rows);
    if (known == commons.end()) return ReadCommon(block, index);
    lastRows = stored.rows;
    return lastCommon = &known->second;
}

const ElementReader::Common* ElementReader::ReadCommon(OpenedBlock& block,
                                                       const SZVLGCompIndex& index) {
    constexpr std::size_t mostKept = 50'000;
    SZVLGZvgComp comp;
    if (!block.ReadComp(index, NoProperties(), comp)) return nullptr;
    const bool isWhole = block.IsAnswerWhole();
    Common common = {ToUtf8(comp.classLevel2Name),   ToUtf8(comp.classLevel2bName),
                     ToUtf8(comp.classLevel3Name),   ToUtf8(comp.classLevel4Name),
                     ToUtf8(comp.ownerTextA),        ToUtf8(comp.ownerTextC),
                     ColourOf(comp.classLevel4Attr), ClassLook(comp)};
    // That was another question, and the view held until then.
    if (!block.ReadView(index, wants.parts, stored)) return nullptr;
    if (!isWhole) return &(damaged = std::move(common));  // the next one of them is told as well
    if (commons.size() >= mostKept) commons.clear();
    lastRows = stored.rows;
    return lastCommon = &commons.insert_or_assign(stored.rows, std::move(common)).first->second;
}

void ElementReader::Fill() {
    texts.ForgetIfMany();
    MakeRoom();
    element.guid = KeyOf(stored.compGuidName);
    element.parents.clear();
    for (const SZVLGKeyView& key : stored.relatedGuidNames) element.parents.push_back(KeyOf(key));
    element.group = NameOrNothing(stored.groupGuidName);
    element.name = {};
    element.properties.clear();
    FillProperties(stored.compProperties, texts.BeforeElements(), element.properties);
    if (wants.materials) FillMaterials();
}

void ElementReader::FillMaterials() {
    element.materials.resize(stored.materials.size());
    for (std::size_t i = 0; i < stored.materials.size(); ++i) {
        const SZVLGMaterialView& from = stored.materials[i];
        MaterialView& material = element.materials[i];
        material.name = NameOrNothing(from.guidName);
        material.category = Kept(from.textA);
        material.properties.clear();
        FillProperties(from.properties, texts.BeforeMaterials(), material.properties);
        // A layer's thickness is stored as a property in metres.
        material.thickness = std::nullopt;
        for (const PropertyView& property : material.properties) {
            if (!property.set.empty() || property.name != "LayerThickness") continue;
            material.thickness = property.Number();
            break;
        }
    }
}

void ElementReader::FillProperties(const SZVLGViewRange& range, KnownText& before,
                                   std::vector<PropertyView>& properties) {
    constexpr std::string_view elementName = "Element.Name";
    const SZVLGPropertyView* at = stored.properties.data() + range.first;
    const SZVLGPropertyView* const last = at + range.count;
    KnownText* previous = &before;
    properties.reserve(range.count);
    while (at != last) {
        KnownText& known = texts.Of(at->first, previous->next);
        previous = &known;
        PropertyView& property = properties.emplace_back();
        property.set = known.set;
        property.name = known.name;
        property.value = Kept(at->second);
        property.kind = noKind;
        if (element.name.data() == nullptr && known.text == elementName) {
            element.name = property.value;
        }
        if (++at == last || !IsCompanion(at->first, known)) continue;
        const KnownText& said = texts.Of(at->second, known.said);
        property.kind = said.kind;
        property.unit = said.unit;
        ++at;
    }
}

/// A unit of two bytes becomes three at most in UTF-8, a GUID of 24 bytes 38 in braces.
void ElementReader::MakeRoom() {
    constexpr std::size_t slack = 64;
    const std::size_t needed = 2 * static_cast<std::size_t>(stored.byteCount) + slack;
    if (needed > room || room > (std::size_t{1} << 20) + 2 * needed) {
        own.reset();
        own = std::unique_ptr<char[]>(new char[room = needed + needed / 2]);
    }
    end = own.get();
}

std::string_view ElementReader::Kept(const SZVLGTextView& text) {
    char* const begin = end;
    end = StoreUtf8(text, begin);
    return {begin, static_cast<std::size_t>(end - begin)};
}

std::string_view ElementReader::KeyOf(const SZVLGKeyView& key) {
    if (!key.name.empty()) return Kept(key.name);
    const std::string text = KeyText(SerialKey(key.guid));
    char* const begin = end;
    end = std::copy(text.begin(), text.end(), begin);
    return {begin, text.size()};
}

/// Empty for the default as well, which says nothing.
std::string_view ElementReader::NameOrNothing(const SZVLGKeyView& key) {
    if (key.name.units == nullptr) return {};
    const std::string_view text = KeyOf(key);
    return text == "none" ? std::string_view() : text;
}

std::optional<double> PropertyView::Number() const {
    return NumberOf(value, kind);
}

const PropertyView* ElementView::Find(std::string_view set, std::string_view property) const {
    for (const PropertyView& each : properties) {
        if (each.name == property && each.set == set) return &each;
    }
    return nullptr;
}

namespace {

void CopyProperties(const std::vector<PropertyView>& from, std::vector<Property>& to) {
    to.resize(from.size());
    for (std::size_t i = 0; i < from.size(); ++i) {
        to[i].set = from[i].set;
        to[i].name = from[i].name;
        to[i].value = from[i].value;
        to[i].kind = from[i].kind;
        to[i].unit = from[i].unit;
    }
}

}  // namespace

void ElementView::CopyTo(Element& to) const {
    to.index = index;
    to.guid = guid;
    to.name = name;
    to.floorName = floorName;
    to.className = className;
    to.predefinedType = predefinedType;
    to.typeName = typeName;
    to.materialName = materialName;
    to.buildingName = buildingName;
    to.siteName = siteName;
    to.colour = colour;
    to.parents.assign(parents.begin(), parents.end());
    to.group = group;
    CopyProperties(properties, to.properties);
    to.materials.resize(materials.size());
    for (std::size_t i = 0; i < materials.size(); ++i) {
        const MaterialView& from = materials[i];
        Material& material = to.materials[i];
        material.name = from.name;
        material.category = from.category;
        material.thickness = from.thickness;
        CopyProperties(from.properties, material.properties);
    }
}

}  // namespace ZVSmartModel
