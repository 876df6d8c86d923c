#include "model/pack/Components.h"

#include <cstring>

#include "model/pack/ShapeRecords.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

u64 BitsOf(double value) {
    u64 bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

/// A GUID name; the default one where there is no name.
SerialKey KeyOf(const std::wstring& name) {
    return name.empty() ? SerialKey() : SerialKey(name);
}

std::size_t TriangleCount(const ShapePart& part) {
    std::size_t count = 0;
    for (const ModelShell& shell : part.shells) count += shell.triangles.size();
    return count;
}

}  // namespace

ComponentMaker::ComponentMaker(const Model& model, unsigned int version)
    : model(model), version(version) {
    for (const ModelElement& element : model.elements) {
        if (const auto colour = ColourOf(element)) colourByClass.emplace(PathOf(element), *colour);
    }
}

SZVLGZvgComp ComponentMaker::Make(const ModelElement& element) {
    SZVLGZvgComp comp;
    SetFloor(element, comp);
    SetOwner(element, comp);
    SetClasses(element, comp);
    SetGeometry(element, comp);
    comp.compGuidName = SerialKey(element.globalId);
    for (const std::wstring& id : element.belongsTo) comp.relatedGuidNames.emplace_back(id);
    if (!element.group.empty()) comp.groupGuidName = SerialKey(element.group);
    comp.compProperties = element.properties;
    return comp;
}

void ComponentMaker::SetFloor(const ModelElement& element, SZVLGZvgComp& comp) const {
    comp.classLevel1Id = static_cast<u32>(element.storey.value_or(model.storeys.size()));
    if (!element.storey) {
        comp.classLevel1Name = L"unassigned";
        return;
    }
    const ModelStorey& storey = model.storeys[*element.storey];
    comp.classLevel1Name = storey.name;
    comp.classLevel1DataA = BitsOf(storey.elevation);
    comp.classLevel1DataB = BitsOf(storey.height);
}

void ComponentMaker::SetOwner(const ModelElement& element, SZVLGZvgComp& comp) const {
    if (!element.building) return;
    const ModelBuilding& building = model.buildings[*element.building];
    comp.ownerGuidName = KeyOf(building.globalId);
    comp.ownerTextA = building.name;
    comp.ownerTextB = building.longName;
    comp.ownerSecondGuidName = KeyOf(building.siteGlobalId);
    comp.ownerTextC = building.siteName;
}

void ComponentMaker::SetClasses(const ModelElement& element, SZVLGZvgComp& comp) {
    const auto number = [this](const std::wstring& parents, const std::wstring& name) {
        auto& numbers = numberByName[parents];
        return numbers.emplace(name, static_cast<u32>(numbers.size())).first->second;
    };
    const ClassPath path = PathOf(element);
    std::tie(comp.classLevel2Name, comp.classLevel3Name, comp.classLevel4Name) = path;
    comp.classLevel2bName = element.predefinedType;
    const std::wstring& level2 = comp.classLevel2Name;
    comp.classLevel2Id = number(L"2", level2);
    comp.classLevel3Id = number(L"3\n" + level2, comp.classLevel3Name);
    comp.classLevel4Id =
        number(L"4\n" + level2 + L'\n' + comp.classLevel3Name, comp.classLevel4Name);
    comp.classLevel2bId = number(L"2b\n" + level2, comp.classLevel2bName);

    const auto shared = colourByClass.find(path);
    if (shared == colourByClass.end()) return;
    comp.classLevel4Attr = ColourAttr(shared->second, version);
    const std::optional<Rgba> own = ColourOf(element);
    if (own && *own != shared->second) comp.compAttr = ColourAttr(own, version);
}

void ComponentMaker::SetGeometry(const ModelElement& element, SZVLGZvgComp& comp) const {
    if (element.shapes.empty() && element.materials.empty()) return;
    SZVLGZvgCompGeoRef& ref = comp.geoRefs.emplace_back();
    for (const ModelMaterial& source : element.materials) {
        SZVLGZvgMaterial& material = ref.materials[static_cast<u32>(ref.materials.size())];
        material.guidName = KeyOf(source.name);
        material.textA = source.category;
        material.properties = source.properties;
    }
    if (element.shapes.empty()) return;
    ref.geoIdentification = element.globalId;
    ref.geo = PlacementRecord(element, model);
    ref.geoIds.push_back({SerialKey(element.globalId), L"", L""});
}

ComponentMaker::ClassPath ComponentMaker::PathOf(const ModelElement& element) const {
    std::wstring look;
    const ShapePart* part = MainPart(element);
    if (part) look = part->styleName;
    if (!element.materials.empty()) look = element.materials.front().name;
    return {element.entityType, element.typeName, look};
}

std::optional<Rgba> ComponentMaker::ColourOf(const ModelElement& element) const {
    const ShapePart* part = MainPart(element);
    return part ? part->colour : std::nullopt;
}

const ShapePart* ComponentMaker::MainPart(const ModelElement& element) const {
    const ShapePart* main = nullptr;
    for (const PlacedShape& placed : element.shapes) {
        for (const ShapePart& part : model.shapes[placed.shape].parts) {
            if (!part.colour) continue;
            if (!main || TriangleCount(part) > TriangleCount(*main)) main = &part;
        }
    }
    return main;
}

}  // namespace ZVSmartModel
