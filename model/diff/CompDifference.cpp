#include "model/diff/CompDifference.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "model/diff/Digest.h"
#include "model/element/ElementRecord.h"
#include "model/element/PropertyKinds.h"
#include "model/element/RecordNames.h"
#include "model/element/Utf8.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;
using ZVSmartSerial::CZVFTSerialWriter;

namespace {

void WriteOwner(CZVFTSerialWriter& writer, const SZVLGZvgComp& comp) {
    writer.WriteKey(comp.ownerGuidName);
    writer.WriteWString(comp.ownerTextA);
    writer.WriteWString(comp.ownerTextB);
    writer.WriteKey(comp.ownerSecondGuidName);
    writer.WriteWString(comp.ownerTextC);
}

void WriteGroup(CZVFTSerialWriter& writer, const SZVLGZvgComp& comp) {
    writer.WriteKey(comp.groupGuidName);
}

void WriteRelated(CZVFTSerialWriter& writer, const SZVLGZvgComp& comp) {
    writer.WriteU64(comp.relatedGuidNames.size());
    for (const SerialKey& key : comp.relatedGuidNames) writer.WriteKey(key);
}

void WriteAppearance(CZVFTSerialWriter& writer, const SZVLGZvgComp& comp) {
    for (const auto* attr : {&comp.compAttr, &comp.classLevel4Attr, &comp.classLevel2bAttr}) {
        WriteAttributes(writer, *attr);
    }
}

void WriteMaterials(CZVFTSerialWriter& writer, const SZVLGZvgComp& comp) {
    for (const SZVLGZvgCompGeoRef& ref : comp.geoRefs) {
        writer.WriteU64(ref.materials.size());
        for (const auto& [key, material] : ref.materials) {
            writer.WriteU32(key);
            writer.WriteKey(material.guidName);
            writer.WriteWString(material.textA);
            writer.WriteWString(material.textB);
            WriteProperties(writer, material.properties);
        }
    }
}

/// Without the names: what they lead to is compared as geometry, and files that number what they
/// store give the same body other names.
void WriteGeoIds(CZVFTSerialWriter& writer, const SZVLGZvgComp& comp) {
    for (const SZVLGZvgCompGeoRef& ref : comp.geoRefs) {
        writer.WriteU64(ref.geoIds.size());
        for (const SZVLGZvgGeoId& row : ref.geoIds) {
            writer.WriteWString(row.textA);
            writer.WriteWString(row.textB);
        }
    }
}

/// Texts that are there, with commas between them.
std::string Joined(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts) {
        if (!text.empty()) joined += (joined.empty() ? "" : ", ") + text;
    }
    return joined;
}

std::string OwnerText(const SZVLGZvgComp& comp) {
    return Joined({ToUtf8(comp.ownerTextA), ToUtf8(comp.ownerTextB), ToUtf8(comp.ownerTextC)});
}

std::string GroupText(const SZVLGZvgComp& comp) {
    return comp.groupGuidName == SerialKey() ? "" : KeyText(comp.groupGuidName);
}

std::string RelatedText(const SZVLGZvgComp& comp) {
    std::vector<std::string> guids;
    for (const SerialKey& key : comp.relatedGuidNames) guids.push_back(KeyText(key));
    return Joined(guids);
}

std::string AppearanceText(const SZVLGZvgComp& comp) {
    const std::optional<Rgba> colour = ColourOf(comp);
    return colour ? ColourText(*colour) : "";
}

std::string MaterialsText(const SZVLGZvgComp& comp) {
    std::vector<std::string> materials;
    for (const Material& material : MaterialsOf(comp)) {
        std::string text = material.name.empty() ? material.category : material.name;
        if (material.thickness) text += ' ' + ToUtf8(NumberText(*material.thickness)) + " m";
        materials.push_back(text);
    }
    return Joined(materials);
}

std::string GeoIdsText(const SZVLGZvgComp& comp) {
    std::vector<std::string> texts;
    for (const SZVLGZvgCompGeoRef& ref : comp.geoRefs) {
        for (const SZVLGZvgGeoId& row : ref.geoIds) {
            texts.push_back(ToUtf8(row.textA));
            texts.push_back(ToUtf8(row.textB));
        }
    }
    return Joined(texts);
}

/// What is compared by its digest, and what people can read of it.
struct Field {
    const char* name;
    void (*write)(CZVFTSerialWriter&, const SZVLGZvgComp&);
    std::string (*text)(const SZVLGZvgComp&);
};

constexpr Field fields[] = {{"owner", WriteOwner, OwnerText},
                            {"groupGuidName", WriteGroup, GroupText},
                            {"relatedGuidNames", WriteRelated, RelatedText},
                            {"appearance", WriteAppearance, AppearanceText},
                            {"materials", WriteMaterials, MaterialsText},
                            {"geoIds", WriteGeoIds, GeoIdsText}};

constexpr std::pair<const char*, std::wstring SZVLGZvgComp::*> levels[] = {
    {"2", &SZVLGZvgComp::classLevel2Name},
    {"3", &SZVLGZvgComp::classLevel3Name},
    {"4", &SZVLGZvgComp::classLevel4Name},
    {"2b", &SZVLGZvgComp::classLevel2bName}};

/// By name; those of one name stay in their order.
PropertyList Sorted(PropertyList properties) {
    std::stable_sort(properties.begin(), properties.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    return properties;
}

std::vector<StoredProperty> SortedProperties(const PropertyList& pairs) {
    std::vector<StoredProperty> properties = PropertiesOfPairs(pairs);
    std::stable_sort(
        properties.begin(), properties.end(),
        [](const StoredProperty& a, const StoredProperty& b) { return a.name < b.name; });
    return properties;
}

/// The value with its unit, and with its kind where that alone may be what differs.
std::string ToldValue(const StoredProperty& property, bool withKind) {
    const std::string value = ToUtf8(ValueWithUnit(property));
    return withKind ? value + " (" + ToUtf8(property.kind) + ')' : value;
}

std::vector<ValueChange> PropertyChanges(const SZVLGZvgComp& compA, const SZVLGZvgComp& compB) {
    std::vector<ValueChange> changes;
    const std::vector<StoredProperty> a = SortedProperties(compA.compProperties);
    const std::vector<StoredProperty> b = SortedProperties(compB.compProperties);
    auto left = a.begin();
    auto right = b.begin();
    while (left != a.end() || right != b.end()) {
        const bool onlyLeft = right == b.end() || (left != a.end() && left->name < right->name);
        const bool onlyRight = left == a.end() || (right != b.end() && right->name < left->name);
        ValueChange change;
        change.name = ToUtf8(onlyRight ? right->name : left->name);
        const bool both = !onlyLeft && !onlyRight;
        const bool equal = both && *left == *right;
        const bool withKind = both && left->kind != right->kind;
        if (!onlyRight) change.a = ToldValue(*left++, withKind);
        if (!onlyLeft) change.b = ToldValue(*right++, withKind);
        if (!equal) changes.push_back(std::move(change));
    }
    return changes;
}

/// An empty text says nothing.
std::optional<std::string> ToldOf(const std::string& text) {
    return text.empty() ? std::nullopt : std::optional(text);
}

std::vector<ValueChange> ClassChanges(const SZVLGZvgComp& a, const SZVLGZvgComp& b) {
    std::vector<ValueChange> changes;
    for (const auto& [level, name] : levels) {
        if (a.*name != b.*name) changes.push_back({level, ToUtf8(a.*name), ToUtf8(b.*name)});
    }
    return changes;
}

u64 FieldDigest(const Field& field, const SZVLGZvgComp& comp) {
    Digest digest;
    field.write(digest.Writer(), comp);
    return digest.Value();
}

}  // namespace

u64 AspectsDigest(const SZVLGZvgComp& comp) {
    Digest digest;
    WriteProperties(digest.Writer(), Sorted(comp.compProperties));
    for (const auto& [level, name] : levels) digest.Writer().WriteWString(comp.*name);
    for (const Field& field : fields) digest.Writer().WriteU64(FieldDigest(field, comp));
    return digest.Value();
}

CompDifference DifferenceOf(const SZVLGZvgComp& a, const SZVLGZvgComp& b) {
    CompDifference difference = {PropertyChanges(a, b), ClassChanges(a, b), {}, {}};
    for (const Field& field : fields) {
        if (FieldDigest(field, a) == FieldDigest(field, b)) continue;
        difference.fields.emplace_back(field.name);
        const std::string inA = field.text(a), inB = field.text(b);
        if (inA != inB) difference.values.push_back({field.name, ToldOf(inA), ToldOf(inB)});
    }
    return difference;
}

}  // namespace ZVSmartModel
