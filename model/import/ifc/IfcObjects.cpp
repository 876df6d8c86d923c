#include "model/import/ifc/IfcObjects.h"

#include <ifcpp/IFC4/include/IfcBuilding.h>
#include <ifcpp/IFC4/include/IfcBuildingStorey.h>
#include <ifcpp/IFC4/include/IfcFeatureElementSubtraction.h>
#include <ifcpp/IFC4/include/IfcGloballyUniqueId.h>
#include <ifcpp/IFC4/include/IfcGroup.h>
#include <ifcpp/IFC4/include/IfcLabel.h>
#include <ifcpp/IFC4/include/IfcProduct.h>
#include <ifcpp/IFC4/include/IfcProject.h>
#include <ifcpp/IFC4/include/IfcSite.h>
#include <ifcpp/IFC4/include/IfcTypeObject.h>
#include <ifcpp/model/BuildingModel.h>

#include <algorithm>
#include <string>

#include "model/import/ifc/IfcProperties.h"
#include "model/import/ifc/IfcRelations.h"
#include "model/import/ifc/PerClass.h"
#include "model/import/ifc/Texts.h"

namespace ZVSmartModel {

namespace {

bool BecomesComponent(const BuildingEntity& entity) {
    if (dynamic_cast<const IfcFeatureElementSubtraction*>(&entity)) return false;
    return dynamic_cast<const IfcProduct*>(&entity) || dynamic_cast<const IfcGroup*>(&entity) ||
           dynamic_cast<const IfcProject*>(&entity);
}

bool IsContent(const IfcObjectDefinition& object) {
    const bool structure = dynamic_cast<const IfcSite*>(&object) ||
                           dynamic_cast<const IfcBuilding*>(&object) ||
                           dynamic_cast<const IfcBuildingStorey*>(&object);
    const auto* product = dynamic_cast<const IfcProduct*>(&object);
    return product && (!structure || product->m_Representation);
}

std::wstring PredefinedTypeOf(const IfcObjectDefinition& object) {
    std::wstring type = EnumeratorOf(object, "PredefinedType");
    const auto typeObject = type.empty() ? TypeOf(object) : nullptr;
    return typeObject ? EnumeratorOf(*typeObject, "PredefinedType") : type;
}

}  // namespace

IfcObjects ObjectsOf(const BuildingModel& model) {
    IfcObjects objects;
    PerClass<bool> becomesComponent;
    for (const auto& [id, entity] : model.getMapIfcEntities()) {
        if (!entity || !becomesComponent.Of(*entity, BecomesComponent)) continue;
        objects.push_back(std::dynamic_pointer_cast<IfcObjectDefinition>(entity));
    }
    return objects;
}

bool AnyContent(const IfcObjects& objects) {
    return std::any_of(objects.begin(), objects.end(),
                       [](const auto& object) { return IsContent(*object); });
}

ModelElement Described(const IfcObjectDefinition& object, const StepText& step,
                       const IfcUnitSymbols& units, PropertyOrder& order, IfcLosses& losses) {
    ModelElement element;
    const auto trueName = step.trueNames.find(object.m_entity_id);
    const bool renamed = trueName != step.trueNames.end();
    const std::string className = renamed ? trueName->second.name : object.className();
    element.globalId = TextOf(object.m_GlobalId);
    element.entityType.assign(className.begin(), className.end());
    const auto type = TypeOf(object);
    if (type) element.typeName = TextOf(type->m_Name);
    const auto* thing = dynamic_cast<const IfcObject*>(&object);
    if (element.typeName.empty() && thing) element.typeName = TextOf(thing->m_ObjectType);
    element.predefinedType = PredefinedTypeOf(object);
    if (renamed) {
        const std::string& given = trueName->second.predefinedType;
        element.predefinedType.assign(given.begin(), given.end());
    }
    element.group = GroupOf(object);
    PropertyGatherer gatherer;
    AddOwnProperties(object, units, gatherer);
    AddRelations(object, units, gatherer);
    losses.DropValues(element, gatherer.Dropped());
    AddTypeProperties(object, units, gatherer);
    std::vector<StoredProperty> properties = gatherer.Take();
    order.Apply(properties);
    element.properties = PairsOf(properties);
    return element;
}

}  // namespace ZVSmartModel
