#include "model/import/ifc/IfcMaterials.h"

#include <ifcpp/IFC4/include/IfcIdentifier.h>
#include <ifcpp/IFC4/include/IfcLabel.h>
#include <ifcpp/IFC4/include/IfcMaterial.h>
#include <ifcpp/IFC4/include/IfcMaterialConstituent.h>
#include <ifcpp/IFC4/include/IfcMaterialConstituentSet.h>
#include <ifcpp/IFC4/include/IfcMaterialLayer.h>
#include <ifcpp/IFC4/include/IfcMaterialLayerSet.h>
#include <ifcpp/IFC4/include/IfcMaterialLayerSetUsage.h>
#include <ifcpp/IFC4/include/IfcMaterialList.h>
#include <ifcpp/IFC4/include/IfcMaterialProfile.h>
#include <ifcpp/IFC4/include/IfcMaterialProfileSet.h>
#include <ifcpp/IFC4/include/IfcMaterialProfileSetUsage.h>
#include <ifcpp/IFC4/include/IfcMaterialProperties.h>
#include <ifcpp/IFC4/include/IfcNonNegativeLengthMeasure.h>
#include <ifcpp/IFC4/include/IfcRelAssociatesMaterial.h>
#include <ifcpp/IFC4/include/IfcTypeObject.h>

#include "model/import/ifc/IfcProperties.h"
#include "model/import/ifc/IfcRelations.h"
#include "model/import/ifc/Metres.h"
#include "model/import/ifc/Texts.h"

namespace ZVSmartModel {

namespace {

using Select = std::shared_ptr<IfcMaterialSelect>;
using Uses = std::vector<IfcMaterialUse>;

void Add(Uses& uses, const std::shared_ptr<IfcMaterial>& material, double layerThickness = 0) {
    if (material) uses.push_back({material, layerThickness});
}

void AddLayer(Uses& uses, const std::shared_ptr<IfcMaterialLayer>& layer) {
    if (!layer) return;
    Add(uses, layer->m_Material, layer->m_LayerThickness ? layer->m_LayerThickness->m_value : 0);
}

void AddLayers(Uses& uses, const std::shared_ptr<IfcMaterialLayerSet>& set) {
    if (!set) return;
    for (const auto& layer : set->m_MaterialLayers) AddLayer(uses, layer);
}

void AddProfiles(Uses& uses, const std::shared_ptr<IfcMaterialProfileSet>& set) {
    if (!set) return;
    for (const auto& profile : set->m_MaterialProfiles) {
        if (profile) Add(uses, profile->m_Material);
    }
}

void AddSelect(Uses& uses, const Select& select) {
    Add(uses, std::dynamic_pointer_cast<IfcMaterial>(select));
    AddLayer(uses, std::dynamic_pointer_cast<IfcMaterialLayer>(select));
    AddLayers(uses, std::dynamic_pointer_cast<IfcMaterialLayerSet>(select));
    AddProfiles(uses, std::dynamic_pointer_cast<IfcMaterialProfileSet>(select));
    if (const auto usage = std::dynamic_pointer_cast<IfcMaterialLayerSetUsage>(select)) {
        AddLayers(uses, usage->m_ForLayerSet);
    }
    if (const auto usage = std::dynamic_pointer_cast<IfcMaterialProfileSetUsage>(select)) {
        AddProfiles(uses, usage->m_ForProfileSet);
    }
    if (const auto profile = std::dynamic_pointer_cast<IfcMaterialProfile>(select)) {
        Add(uses, profile->m_Material);
    }
    if (const auto list = std::dynamic_pointer_cast<IfcMaterialList>(select)) {
        for (const auto& material : list->m_Materials) Add(uses, material);
    }
    if (const auto set = std::dynamic_pointer_cast<IfcMaterialConstituentSet>(select)) {
        for (const auto& part : set->m_MaterialConstituents) {
            if (part) Add(uses, part->m_Material);
        }
    }
}

Uses OwnUses(const IfcObjectDefinition& object) {
    Uses uses;
    for (const auto& weakRelation : object.m_HasAssociations_inverse) {
        const auto relation =
            std::dynamic_pointer_cast<IfcRelAssociatesMaterial>(weakRelation.lock());
        if (relation) AddSelect(uses, relation->m_RelatingMaterial);
    }
    return uses;
}

}  // namespace

std::vector<IfcMaterialUse> MaterialUsesOf(const IfcObjectDefinition& object) {
    Uses uses = OwnUses(object);
    const auto type = TypeOf(object);
    return uses.empty() && type ? OwnUses(*type) : uses;
}

ModelMaterial MaterialOf(const IfcMaterialUse& use, double unitInMetres,
                         const IfcUnitSymbols& units) {
    ModelMaterial material;
    material.name = TextOf(use.material->m_Name);
    material.category = TextOf(use.material->m_Category);
    PropertyGatherer gatherer;
    if (use.layerThickness > 0) {
        gatherer.Add(ThicknessProperty(InMetres(use.layerThickness, unitInMetres)));
    }
    for (const auto& weakSet : use.material->m_HasProperties_inverse) {
        const auto set = weakSet.lock();
        if (set) AddProperties(TextOf(set->m_Name), set->m_Properties, units, gatherer);
    }
    material.properties = PairsOf(gatherer.Take());
    return material;
}

}  // namespace ZVSmartModel
