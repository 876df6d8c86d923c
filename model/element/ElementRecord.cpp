#include "model/element/ElementRecord.h"

#include "model/element/PropertyKinds.h"
#include "model/element/RecordNames.h"
#include "model/element/Utf8.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

/// The GUID or the name; empty for the default, which says nothing.
std::string TextOf(const SerialKey& key) {
    const bool isDefault = key.name == SerialKey().name && key.guid == SerialGuid();
    return isDefault ? "" : KeyText(key);
}

/// A layer's thickness is stored as a property in metres.
std::optional<double> ThicknessOf(const std::vector<Property>& properties) {
    for (const Property& property : properties) {
        if (property.FullName() == "LayerThickness") return property.Number();
    }
    return std::nullopt;
}

}  // namespace

std::string Property::FullName() const {
    return set.empty() ? name : set + '.' + name;
}

std::optional<double> Property::Number() const {
    return NumberOf(value, kind);
}

const Property* Element::Find(const std::string& set, const std::string& property) const {
    for (const Property& each : properties) {
        if (each.set == set && each.name == property) return &each;
    }
    return nullptr;
}

std::vector<Property> PublicProperties(const PropertyList& pairs) {
    std::vector<Property> properties;
    for (std::size_t i = 0; i < pairs.size();) {
        const WideProperty view = TakeProperty(pairs, i);
        properties.push_back({ToUtf8(view.set), ToUtf8(view.name), ToUtf8(view.value),
                              ToUtf8(view.kind), ToUtf8(view.unit)});
    }
    return properties;
}

PropertyList PairsOf(const std::vector<Property>& properties) {
    std::vector<StoredProperty> stored;
    stored.reserve(properties.size());
    for (const Property& property : properties) {
        stored.push_back({FromUtf8(property.FullName()), FromUtf8(property.value),
                          FromUtf8(property.kind), FromUtf8(property.unit)});
    }
    return PairsOf(stored);
}

namespace {

constexpr std::wstring_view nameProperty = L"Element.Name";

}  // namespace

std::wstring_view WideNameOf(const SZVLGZvgComp& comp) {
    for (const auto& [name, value] : comp.compProperties) {
        if (name == nameProperty) return value;
    }
    return {};
}

SZVLGCompParts NameAlone() {
    return {true, std::wstring(nameProperty)};
}

SZVLGCompParts NoProperties() {
    return {false, L""};
}

std::string NameOf(const SZVLGZvgComp& comp) {
    return ToUtf8(WideNameOf(comp));
}

std::optional<Rgba> ColourOf(const SZVLGZvgDisplayAttr& attr) {
    if ((attr.flags & DisplayAttrFlag::colour) == 0) return std::nullopt;
    return Rgba{attr.red, attr.green, attr.blue, attr.alpha};
}

std::optional<Rgba> ColourOf(const SZVLGZvgComp& comp) {
    const std::optional<Rgba> own = ColourOf(comp.compAttr);
    return own ? own : ColourOf(comp.classLevel4Attr);
}

Look LookOf(const SZVLGZvgDisplayAttr& attr, std::string_view otherName) {
    const Rgba colour = {attr.red, attr.green, attr.blue, attr.alpha};
    const bool named = (attr.flags & DisplayAttrFlag::styleName) != 0 && !attr.styleName.empty();
    return {named ? ToUtf8(attr.styleName) : std::string(otherName), colour};
}

std::optional<Look> ClassLook(const SZVLGZvgComp& comp) {
    for (const SZVLGZvgDisplayAttr* attr : {&comp.classLevel4Attr, &comp.classLevel2bAttr}) {
        if (ColourOf(*attr)) return LookOf(*attr, ToUtf8(comp.classLevel4Name));
    }
    return std::nullopt;
}

Look OwnLook(const SZVLGZvgComp& comp) {
    if (ColourOf(comp.compAttr)) return LookOf(comp.compAttr, ToUtf8(comp.classLevel4Name));
    return ClassLook(comp).value_or(Look());
}

std::string ColourText(const Rgba& colour) {
    constexpr char digits[] = "0123456789ABCDEF";
    std::string text = "#";
    for (const unsigned int part : {colour.red, colour.green, colour.blue, colour.alpha}) {
        text += digits[part >> 4];
        text += digits[part & 0xF];
    }
    return text;
}

std::vector<Material> MaterialsOf(const SZVLGZvgComp& comp) {
    std::vector<Material> materials;
    for (const SZVLGZvgCompGeoRef& ref : comp.geoRefs) {
        for (const auto& [number, stored] : ref.materials) {
            Material& material = materials.emplace_back();
            material.name = TextOf(stored.guidName);
            material.category = ToUtf8(stored.textA);
            material.properties = PublicProperties(stored.properties);
            material.thickness = ThicknessOf(material.properties);
        }
    }
    return materials;
}

Element ElementOf(const SZVLGZvgComp& comp, ElementIndex index, const std::string& floorName) {
    Element element;
    element.index = index;
    element.guid = KeyText(comp.compGuidName);
    element.name = NameOf(comp);
    element.floorName = floorName;
    element.className = ToUtf8(comp.classLevel2Name);
    element.predefinedType = ToUtf8(comp.classLevel2bName);
    element.typeName = ToUtf8(comp.classLevel3Name);
    element.materialName = ToUtf8(comp.classLevel4Name);
    element.buildingName = ToUtf8(comp.ownerTextA);
    element.siteName = ToUtf8(comp.ownerTextC);
    element.colour = ColourOf(comp);
    for (const SerialKey& key : comp.relatedGuidNames) element.parents.push_back(KeyText(key));
    element.group = TextOf(comp.groupGuidName);
    element.properties = PublicProperties(comp.compProperties);
    element.materials = MaterialsOf(comp);
    return element;
}

}  // namespace ZVSmartModel
