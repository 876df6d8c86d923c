#include "model/import/ifc/IfcStructure.h"

#include <ifcpp/IFC4/include/IfcAxis2Placement3D.h>
#include <ifcpp/IFC4/include/IfcBuilding.h>
#include <ifcpp/IFC4/include/IfcBuildingStorey.h>
#include <ifcpp/IFC4/include/IfcCartesianPoint.h>
#include <ifcpp/IFC4/include/IfcDistributionElement.h>
#include <ifcpp/IFC4/include/IfcElement.h>
#include <ifcpp/IFC4/include/IfcFeatureElementSubtraction.h>
#include <ifcpp/IFC4/include/IfcGloballyUniqueId.h>
#include <ifcpp/IFC4/include/IfcLabel.h>
#include <ifcpp/IFC4/include/IfcLengthMeasure.h>
#include <ifcpp/IFC4/include/IfcLocalPlacement.h>
#include <ifcpp/IFC4/include/IfcOpeningElement.h>
#include <ifcpp/IFC4/include/IfcPort.h>
#include <ifcpp/IFC4/include/IfcRelAggregates.h>
#include <ifcpp/IFC4/include/IfcRelConnectsPortToElement.h>
#include <ifcpp/IFC4/include/IfcRelContainedInSpatialStructure.h>
#include <ifcpp/IFC4/include/IfcRelFillsElement.h>
#include <ifcpp/IFC4/include/IfcRelNests.h>
#include <ifcpp/IFC4/include/IfcRelVoidsElement.h>
#include <ifcpp/IFC4/include/IfcSite.h>
#include <ifcpp/IFC4/include/IfcSpace.h>
#include <ifcpp/model/BuildingModel.h>

#include <algorithm>

#include "model/import/ifc/Metres.h"
#include "model/import/ifc/PerClass.h"
#include "model/import/ifc/Texts.h"

namespace ZVSmartModel {

namespace {

using Object = std::shared_ptr<IfcObjectDefinition>;

/// Longer chains of belonging than this are taken for circles.
constexpr int longestChain = 64;

/// What `object` is a part of; null where it stands alone.
Object WholeOf(const IfcObjectDefinition& object) {
    for (const auto& weakRelation : object.m_Decomposes_inverse) {
        const auto relation = weakRelation.lock();
        if (relation && relation->m_RelatingObject) return relation->m_RelatingObject;
    }
    for (const auto& weakRelation : object.m_Nests_inverse) {
        const auto relation = weakRelation.lock();
        if (relation && relation->m_RelatingObject) return relation->m_RelatingObject;
    }
    return nullptr;
}

/// The wall, slab or roof whose opening a door or window fills.
Object HostOf(const IfcElement& element) {
    for (const auto& weakRelation : element.m_FillsVoids_inverse) {
        const auto fills = weakRelation.lock();
        if (!fills || !fills->m_RelatingOpeningElement) continue;
        const auto voids = fills->m_RelatingOpeningElement->m_VoidsElements_inverse.lock();
        if (voids && voids->m_RelatingBuildingElement) return voids->m_RelatingBuildingElement;
    }
    return nullptr;
}

/// The element that a port is on.
Object ElementOf(const IfcPort& port) {
    for (const auto& weakRelation : port.m_ContainedIn_inverse) {
        const auto relation = weakRelation.lock();
        if (relation && relation->m_RelatedElement) return relation->m_RelatedElement;
    }
    return nullptr;
}

/// What an object has its place by although it is no part of it.
Object HolderOf(const IfcObjectDefinition& object) {
    if (const auto* element = dynamic_cast<const IfcElement*>(&object)) return HostOf(*element);
    if (const auto* port = dynamic_cast<const IfcPort*>(&object)) return ElementOf(*port);
    return nullptr;
}

template <typename Type, typename Model>
std::vector<std::shared_ptr<Type>> EntitiesOf(const Model& model) {
    std::vector<std::shared_ptr<Type>> found;
    IsOf<Type> isWanted;
    for (const auto& [id, entity] : model.getMapIfcEntities()) {
        if (!entity || !isWanted(*entity)) continue;
        found.push_back(std::dynamic_pointer_cast<Type>(entity));
    }
    return found;
}

/// The height of a placement's origin over the chain it is relative to, in the file's unit.
double PlacementHeight(const std::shared_ptr<IfcObjectPlacement>& placement) {
    double height = 0;
    auto local = std::dynamic_pointer_cast<IfcLocalPlacement>(placement);
    for (int step = 0; local && step < longestChain; ++step) {
        const auto axes =
            std::dynamic_pointer_cast<IfcAxis2Placement3D>(local->m_RelativePlacement);
        const bool has = axes && axes->m_Location && axes->m_Location->m_Coordinates.size() > 2 &&
                         axes->m_Location->m_Coordinates[2];
        if (has) height += axes->m_Location->m_Coordinates[2]->m_value;
        local = std::dynamic_pointer_cast<IfcLocalPlacement>(local->m_PlacementRelTo);
    }
    return height;
}

double ElevationOf(const IfcBuildingStorey& storey) {
    return storey.m_Elevation ? storey.m_Elevation->m_value
                              : PlacementHeight(storey.m_ObjectPlacement);
}

/// A name that no storey has yet.
std::wstring UniqueName(std::wstring name, const std::vector<ModelStorey>& storeys) {
    if (name.empty()) name = L"storey";
    const auto taken = [&storeys](const std::wstring& candidate) {
        return std::any_of(storeys.begin(), storeys.end(),
                           [&](const ModelStorey& s) { return s.name == candidate; });
    };
    std::wstring unique = name;
    for (int number = 2; taken(unique); ++number) {
        unique = name + L" (" + std::to_wstring(number) + L')';
    }
    return unique;
}

std::wstring NameOf(const IfcSpatialElement& element) {
    std::wstring name = TextOf(element.m_Name);
    return name.empty() ? TextOf(element.m_LongName) : name;
}

}  // namespace

IfcStructure::IfcStructure(const BuildingModel& model, double unitInMetres) {
    AddStoreys(EntitiesOf<IfcBuildingStorey>(model), unitInMetres);
    for (const auto& building : EntitiesOf<IfcBuilding>(model)) AddBuilding(*building);
    for (const auto& relation : EntitiesOf<IfcRelContainedInSpatialStructure>(model)) {
        for (const auto& product : relation->m_RelatedElements) {
            if (!product || !relation->m_RelatingStructure) continue;
            containerByEntity.emplace(product->m_entity_id, relation->m_RelatingStructure);
        }
    }
}

void IfcStructure::AddStoreys(const std::vector<std::shared_ptr<IfcBuildingStorey>>& found,
                              double unit) {
    auto sorted = found;
    std::stable_sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) {
        return ElevationOf(*a) < ElevationOf(*b);
    });
    for (const auto& storey : sorted) {
        storeyByEntity[storey->m_entity_id] = storeys.size();
        storeys.push_back(
            {UniqueName(NameOf(*storey), storeys), InMetres(ElevationOf(*storey), unit), 0});
    }
    for (std::size_t i = 0; i < storeys.size(); ++i) {
        const auto next = std::find_if(
            storeys.begin(), storeys.end(),
            [&](const ModelStorey& other) { return other.elevation > storeys[i].elevation; });
        if (next != storeys.end())
            storeys[i].height = InMetres(next->elevation - storeys[i].elevation, 1);
    }
}

void IfcStructure::AddBuilding(const IfcBuilding& building) {
    ModelBuilding record;
    record.globalId = TextOf(building.m_GlobalId);
    record.name = TextOf(building.m_Name);
    record.longName = TextOf(building.m_LongName);
    Object above = WholeOf(building);
    for (int step = 0; above && step < longestChain; ++step, above = WholeOf(*above)) {
        const auto site = std::dynamic_pointer_cast<IfcSite>(above);
        if (!site) continue;
        record.siteGlobalId = TextOf(site->m_GlobalId);
        record.siteName = NameOf(*site);
        break;
    }
    buildingByEntity[building.m_entity_id] = buildings.size();
    buildings.push_back(record);
}

/// One step from an object towards the project.
Object IfcStructure::Above(const IfcObjectDefinition& object) const {
    const auto container = containerByEntity.find(object.m_entity_id);
    if (container != containerByEntity.end()) return container->second;
    if (Object whole = WholeOf(object)) return whole;
    return HolderOf(object);
}

void IfcStructure::PlaceAt(int entity, ModelElement& element) const {
    const auto storey = storeyByEntity.find(entity);
    if (storey != storeyByEntity.end() && !element.storey) element.storey = storey->second;
    const auto building = buildingByEntity.find(entity);
    if (building != buildingByEntity.end() && !element.building) {
        element.building = building->second;
    }
}

void IfcStructure::Place(const IfcObjectDefinition& source, ModelElement& element) const {
    for (const Object& owner : {WholeOf(source), HolderOf(source)}) {
        const bool isComponent = std::dynamic_pointer_cast<IfcElement>(owner) ||
                                 std::dynamic_pointer_cast<IfcSpace>(owner);
        if (isComponent) element.belongsTo.push_back(TextOf(owner->m_GlobalId));
    }
    PlaceAt(source.m_entity_id, element);
    Object above = Above(source);
    for (int step = 0; above && step < longestChain; ++step, above = Above(*above)) {
        PlaceAt(above->m_entity_id, element);
    }
}

}  // namespace ZVSmartModel
