#include "model/pack/Components.h"

#include <cstring>
#include <string_view>

#include "model/element/RecordNames.h"

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

std::wstring CountingName(wchar_t letter, std::size_t number) {
    constexpr std::wstring_view allDigits = L"0123456789abcdefghijklmnopqrstuvwxyz";
    std::wstring digits;
    for (std::size_t left = number; digits.empty() || left != 0; left /= allDigits.size()) {
        digits.insert(digits.begin(), allDigits[left % allDigits.size()]);
    }
    return letter + std::to_wstring(digits.size()) + digits;
}

}  // namespace

void ComponentMaker::AddStorey(const ModelStorey& storey) {
    storeyOrders.push_back(static_cast<u32>(storeys.size() + (unassignedOrder ? 1 : 0)));
    storeys.push_back(storey);
}

void ComponentMaker::LendColour(const ModelElement& element) {
    if (const auto colour = ColourOf(element)) colourByClass.emplace(PathOf(element), colour);
}

const std::wstring& ComponentMaker::NameShape(std::size_t shape) {
    return shapes[shape].key = CountingName(L's', namedShapes++);
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

void ComponentMaker::SetFloor(const ModelElement& element, SZVLGZvgComp& comp) {
    if (!element.storey) {
        if (!unassignedOrder) unassignedOrder = static_cast<u32>(storeys.size());
        comp.classLevel1Id = *unassignedOrder;
        comp.classLevel1Name = unassignedFloorName;
        return;
    }
    const ModelStorey& storey = storeys[*element.storey];
    comp.classLevel1Id = storeyOrders[*element.storey];
    comp.classLevel1Name = storey.name;
    comp.classLevel1DataA = BitsOf(storey.elevation);
    comp.classLevel1DataB = BitsOf(storey.height);
}

void ComponentMaker::SetOwner(const ModelElement& element, SZVLGZvgComp& comp) const {
    if (!element.building) return;
    const ModelBuilding& building = buildings[*element.building];
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

    const std::optional<Rgba> own = ColourOf(element);
    const std::optional<Rgba>& shared = colourByClass.emplace(path, own).first->second;
    comp.classLevel4Attr = ColourAttr(shared, version);
    if (own && own != shared) comp.compAttr = ColourAttr(own, version);
}

void ComponentMaker::SetGeometry(const ModelElement& element, SZVLGZvgComp& comp) {
    if (element.shapes.empty() && element.materials.empty()) return;
    SZVLGZvgCompGeoRef& ref = comp.geoRefs.emplace_back();
    for (const ModelMaterial& source : element.materials) {
        SZVLGZvgMaterial& material = ref.materials[static_cast<u32>(ref.materials.size())];
        material.guidName = KeyOf(source.name);
        material.textA = source.category;
        material.properties = source.properties;
    }
    if (element.shapes.empty()) return;
    ref.geoIdentification = CountingName(L'b', namedBodies++);
    ref.geo = PlacementRecord(element, shapes);
    ref.geoIds.push_back({SerialKey(ref.geoIdentification), L"", L""});
}

ComponentMaker::ClassPath ComponentMaker::PathOf(const ModelElement& element) const {
    std::wstring look;
    const ShapeSummary* shape = MainShape(element);
    if (shape) look = shape->styleName;
    if (!element.materials.empty()) look = element.materials.front().name;
    return {element.entityType, element.typeName, look};
}

std::optional<Rgba> ComponentMaker::ColourOf(const ModelElement& element) const {
    const ShapeSummary* shape = MainShape(element);
    return shape ? shape->colour : std::nullopt;
}

const ShapeSummary* ComponentMaker::MainShape(const ModelElement& element) const {
    const ShapeSummary* main = nullptr;
    for (const PlacedShape& placed : element.shapes) {
        const ShapeSummary& shape = shapes[placed.shape];
        if (shape.colour && (!main || shape.triangles > main->triangles)) main = &shape;
    }
    return main;
}

}  // namespace ZVSmartModel
