#include "model/import/ifc/IfcRelations.h"

#include <ifcpp/IFC4/include/IfcClassification.h>
#include <ifcpp/IFC4/include/IfcClassificationReference.h>
#include <ifcpp/IFC4/include/IfcConnectionTypeEnum.h>
#include <ifcpp/IFC4/include/IfcCovering.h>
#include <ifcpp/IFC4/include/IfcDistributionElement.h>
#include <ifcpp/IFC4/include/IfcDistributionPort.h>
#include <ifcpp/IFC4/include/IfcGloballyUniqueId.h>
#include <ifcpp/IFC4/include/IfcGroup.h>
#include <ifcpp/IFC4/include/IfcIdentifier.h>
#include <ifcpp/IFC4/include/IfcInternalOrExternalEnum.h>
#include <ifcpp/IFC4/include/IfcLabel.h>
#include <ifcpp/IFC4/include/IfcMappedItem.h>
#include <ifcpp/IFC4/include/IfcPhysicalOrVirtualEnum.h>
#include <ifcpp/IFC4/include/IfcPresentationLayerAssignment.h>
#include <ifcpp/IFC4/include/IfcProductRepresentation.h>
#include <ifcpp/IFC4/include/IfcRelAssignsToGroup.h>
#include <ifcpp/IFC4/include/IfcRelAssociatesClassification.h>
#include <ifcpp/IFC4/include/IfcRelConnectsPathElements.h>
#include <ifcpp/IFC4/include/IfcRelConnectsPortToElement.h>
#include <ifcpp/IFC4/include/IfcRelConnectsPorts.h>
#include <ifcpp/IFC4/include/IfcRelCoversBldgElements.h>
#include <ifcpp/IFC4/include/IfcRelCoversSpaces.h>
#include <ifcpp/IFC4/include/IfcRelDefinesByType.h>
#include <ifcpp/IFC4/include/IfcRelNests.h>
#include <ifcpp/IFC4/include/IfcRelReferencedInSpatialStructure.h>
#include <ifcpp/IFC4/include/IfcRelServicesBuildings.h>
#include <ifcpp/IFC4/include/IfcRelSpaceBoundary.h>
#include <ifcpp/IFC4/include/IfcRepresentation.h>
#include <ifcpp/IFC4/include/IfcRepresentationItem.h>
#include <ifcpp/IFC4/include/IfcRepresentationMap.h>
#include <ifcpp/IFC4/include/IfcSpace.h>
#include <ifcpp/IFC4/include/IfcText.h>
#include <ifcpp/IFC4/include/IfcTypeObject.h>
#include <ifcpp/IFC4/include/IfcURIReference.h>
#include <ifcpp/IFC4/include/IfcZone.h>

#include <algorithm>
#include <map>

#include "model/import/ifc/IfcProperties.h"
#include "model/import/ifc/IfcSituation.h"
#include "model/import/ifc/IfcValues.h"
#include "model/import/ifc/Texts.h"

namespace ZVSmartModel {

namespace {

/// GlobalIds by the name of the property that lists them, each once.
class References {
  public:
    template <typename Root>
    void Add(const std::wstring& name, const std::shared_ptr<Root>& to) {
        if (!to) return;
        const std::wstring id = TextOf(to->m_GlobalId);
        auto& ids = idsByName[name];
        if (std::find(ids.begin(), ids.end(), id) == ids.end()) ids.push_back(id);
    }

    void AddTo(PropertyGatherer& gatherer) const {
        for (const auto& [name, ids] : idsByName) {
            std::wstring text;
            for (const std::wstring& id : ids) text += (text.empty() ? L"" : L", ") + id;
            gatherer.Add({name, text, referenceKind, L""});
        }
    }

  private:
    std::map<std::wstring, std::vector<std::wstring>> idsByName;
};

std::wstring ClassNameOf(const BuildingObject& entity) {
    const std::string name = entity.className();
    return {name.begin(), name.end()};
}

/// An enumerator as a word: ".INTERNAL." is "Internal".
template <typename Enum>
std::wstring WordOf(const std::shared_ptr<Enum>& value) {
    if (!value) return L"";
    std::wstring word;
    for (const wchar_t c : value->toString()) {
        const bool capital = c >= L'A' && c <= L'Z';
        if (capital) word += static_cast<wchar_t>(word.empty() ? c : c + 32);
    }
    return word == L"Notdefined" ? L"" : word;
}

void AddType(const IfcObjectDefinition& object, const IfcUnitSymbols& units,
             PropertyGatherer& gatherer) {
    const auto type = TypeOf(object);
    if (!type) return;
    gatherer.AddText(L"Type.GlobalId", TextOf(type->m_GlobalId));
    gatherer.AddText(L"Type.Class", ClassNameOf(*type));
    AddAttributes(L"Type", *type, units, gatherer);
}

/// References stand in references; the system that they are of is the outermost.
std::wstring SystemOf(const std::shared_ptr<IfcClassificationReference>& reference) {
    constexpr int deepest = 32;
    auto at = reference;
    for (int depth = 0; at && depth < deepest; ++depth) {
        if (const auto system =
                std::dynamic_pointer_cast<IfcClassification>(at->m_ReferencedSource))
            return TextOf(system->m_Name);
        at = std::dynamic_pointer_cast<IfcClassificationReference>(at->m_ReferencedSource);
    }
    return {};
}

void AddClassification(const IfcRelAssociatesClassification& relation, PropertyGatherer& gatherer) {
    const auto setOf = [&](const std::wstring& system) {
        return gatherer.FreeSet(system.empty() ? L"Classification" : L"Classification." + system);
    };
    const auto& select = relation.m_RelatingClassification;
    if (const auto system = std::dynamic_pointer_cast<IfcClassification>(select)) {
        const std::wstring set = setOf(TextOf(system->m_Name));
        gatherer.AddText(set + L".Source", TextOf(system->m_Source));
        gatherer.AddText(set + L".Edition", TextOf(system->m_Edition));
    }
    const auto reference = std::dynamic_pointer_cast<IfcClassificationReference>(select);
    if (!reference) return;
    const std::wstring set = setOf(SystemOf(reference));
    gatherer.AddText(set + L".Code", TextOf(reference->m_Identification));
    gatherer.AddText(set + L".Name", TextOf(reference->m_Name));
    gatherer.AddText(set + L".Location", TextOf(reference->m_Location));
}

void AddClassifications(const IfcObjectDefinition& object, PropertyGatherer& gatherer) {
    for (const auto& weakRelation : object.m_HasAssociations_inverse) {
        const auto relation =
            std::dynamic_pointer_cast<IfcRelAssociatesClassification>(weakRelation.lock());
        if (relation) AddClassification(*relation, gatherer);
    }
}

std::vector<std::shared_ptr<IfcGroup>> GroupsOf(const IfcObjectDefinition& object) {
    std::vector<std::shared_ptr<IfcGroup>> groups;
    for (const auto& weakRelation : object.m_HasAssignments_inverse) {
        const auto relation = std::dynamic_pointer_cast<IfcRelAssignsToGroup>(weakRelation.lock());
        if (relation && relation->m_RelatingGroup) groups.push_back(relation->m_RelatingGroup);
    }
    return groups;
}

void AddGroups(const IfcObjectDefinition& object, PropertyGatherer& gatherer) {
    for (const auto& group : GroupsOf(object)) {
        const auto zone = std::dynamic_pointer_cast<IfcZone>(group);
        const bool system = std::dynamic_pointer_cast<IfcSystem>(group) != nullptr;
        const std::wstring set = gatherer.FreeSet(zone ? L"Zone" : system ? L"System" : L"Group");
        gatherer.AddText(set + L".Name", TextOf(group->m_Name));
        if (zone) gatherer.AddText(set + L".LongName", TextOf(zone->m_LongName));
        gatherer.AddText(set + L".ObjectType", TextOf(group->m_ObjectType));
        gatherer.Add({set + L".GlobalId", TextOf(group->m_GlobalId), referenceKind, L""});
    }
}

/// "SpaceBoundary.PhysicalExternal": what the boundary is.
std::wstring NameOf(const IfcRelSpaceBoundary& boundary) {
    return L"SpaceBoundary." + WordOf(boundary.m_PhysicalOrVirtualBoundary) +
           WordOf(boundary.m_InternalOrExternalBoundary);
}

void AddBoundaries(const IfcObjectDefinition& object, References& references) {
    if (const auto* space = dynamic_cast<const IfcSpace*>(&object)) {
        for (const auto& weakBoundary : space->m_BoundedBy_inverse) {
            const auto boundary = weakBoundary.lock();
            if (boundary) references.Add(NameOf(*boundary), boundary->m_RelatedBuildingElement);
        }
    }
    const auto* element = dynamic_cast<const IfcElement*>(&object);
    if (!element) return;
    for (const auto& weakBoundary : element->m_ProvidesBoundaries_inverse) {
        const auto boundary = weakBoundary.lock();
        if (!boundary) continue;
        references.Add(NameOf(*boundary),
                       std::dynamic_pointer_cast<IfcSpace>(boundary->m_RelatingSpace));
    }
}

std::wstring PlaceOf(const std::shared_ptr<IfcConnectionTypeEnum>& type) {
    const std::wstring word = WordOf(type);
    return word == L"Atstart"  ? L"AtStart"
           : word == L"Atend"  ? L"AtEnd"
           : word == L"Atpath" ? L"AtPath"
                               : L"";
}

/// "Connection.AtStart": where on this element the other is, as far as the file says.
void AddConnections(const IfcElement& element, References& references) {
    const auto add = [&](const std::shared_ptr<IfcRelConnectsElements>& relation, bool relating) {
        if (!relation) return;
        const auto path = std::dynamic_pointer_cast<IfcRelConnectsPathElements>(relation);
        std::wstring place;
        if (path) {
            place =
                PlaceOf(relating ? path->m_RelatingConnectionType : path->m_RelatedConnectionType);
        }
        references.Add(L"Connection." + (place.empty() ? L"Elements" : place),
                       relating ? relation->m_RelatedElement : relation->m_RelatingElement);
    };
    for (const auto& relation : element.m_ConnectedTo_inverse) add(relation.lock(), true);
    for (const auto& relation : element.m_ConnectedFrom_inverse) add(relation.lock(), false);
}

void AddCovered(const IfcElement& element, References& references) {
    const auto* covering = dynamic_cast<const IfcCovering*>(&element);
    if (!covering) return;
    for (const auto& weakRelation : covering->m_CoversSpaces_inverse) {
        if (const auto relation = weakRelation.lock())
            references.Add(L"Covering.Spaces", relation->m_RelatingSpace);
    }
    for (const auto& weakRelation : covering->m_CoversElements_inverse) {
        if (const auto relation = weakRelation.lock())
            references.Add(L"Covering.Elements", relation->m_RelatingBuildingElement);
    }
}

void AddElementRelations(const IfcElement& element, References& references) {
    AddConnections(element, references);
    AddCovered(element, references);
    for (const auto& weakRelation : element.m_ReferencedInStructures_inverse) {
        if (const auto relation = weakRelation.lock())
            references.Add(L"Structure.ReferencedIn", relation->m_RelatingStructure);
    }
}

/// The other ports that a port is connected to.
void AddPort(const IfcPort& port, References& references) {
    for (const auto& weakRelation : port.m_ConnectedTo_inverse) {
        if (const auto relation = weakRelation.lock())
            references.Add(L"Port.ConnectedTo", relation->m_RelatedPort);
    }
    for (const auto& weakRelation : port.m_ConnectedFrom_inverse) {
        if (const auto relation = weakRelation.lock())
            references.Add(L"Port.ConnectedTo", relation->m_RelatingPort);
    }
}

void AddServed(const IfcObjectDefinition& object, References& references) {
    const auto* system = dynamic_cast<const IfcSystem*>(&object);
    if (!system) return;
    for (const auto& weakRelation : system->m_ServicesBuildings_inverse) {
        const auto relation = weakRelation.lock();
        if (!relation) continue;
        for (const auto& served : relation->m_RelatedBuildings)
            references.Add(L"System.Serves", served);
    }
}

/// Gathers the layers of a product's representations and of what they consist of.
class LayerWalk {
  public:
    void Take(const std::shared_ptr<IfcRepresentation>& representation, int depth) {
        constexpr int deepestMapping = 4;
        if (!representation || depth > deepestMapping) return;
        Take(representation->m_LayerAssignments_inverse);
        for (const auto& item : representation->m_Items) {
            if (!item) continue;
            Take(item->m_LayerAssignment_inverse);
            const auto mapped = std::dynamic_pointer_cast<IfcMappedItem>(item);
            if (mapped && mapped->m_MappingSource)
                Take(mapped->m_MappingSource->m_MappedRepresentation, depth + 1);
        }
    }

    void AddTo(PropertyGatherer& gatherer) const {
        for (const auto& layer : layers) {
            const std::wstring set = gatherer.FreeSet(L"Layer");
            gatherer.AddText(set + L".Name", TextOf(layer->m_Name));
            gatherer.AddText(set + L".Description", TextOf(layer->m_Description));
        }
    }

  private:
    void Take(const std::vector<std::weak_ptr<IfcPresentationLayerAssignment>>& assignments) {
        for (const auto& weakLayer : assignments) {
            const auto layer = weakLayer.lock();
            if (!layer || std::find(layers.begin(), layers.end(), layer) != layers.end()) continue;
            layers.push_back(layer);
        }
    }

    std::vector<std::shared_ptr<IfcPresentationLayerAssignment>> layers;
};

void AddLayers(const IfcObjectDefinition& object, PropertyGatherer& gatherer) {
    const auto* product = dynamic_cast<const IfcProduct*>(&object);
    if (!product || !product->m_Representation) return;
    LayerWalk walk;
    for (const auto& representation : product->m_Representation->m_Representations)
        walk.Take(representation, 0);
    walk.AddTo(gatherer);
}

}  // namespace

std::shared_ptr<IfcTypeObject> TypeOf(const IfcObjectDefinition& object) {
    const auto* thing = dynamic_cast<const IfcObject*>(&object);
    if (!thing) return nullptr;
    for (const auto& weakRelation : thing->m_IsTypedBy_inverse) {
        const auto relation = weakRelation.lock();
        if (relation && relation->m_RelatingType) return relation->m_RelatingType;
    }
    return nullptr;
}

void AddRelations(const IfcObjectDefinition& object, const IfcUnitSymbols& units,
                  PropertyGatherer& gatherer) {
    AddSituation(object, units, gatherer);
    AddType(object, units, gatherer);
    AddClassifications(object, gatherer);
    if (const auto type = TypeOf(object)) AddClassifications(*type, gatherer);
    AddGroups(object, gatherer);
    References references;
    AddBoundaries(object, references);
    if (const auto* element = dynamic_cast<const IfcElement*>(&object)) {
        AddElementRelations(*element, references);
    }
    if (const auto* port = dynamic_cast<const IfcPort*>(&object)) AddPort(*port, references);
    AddServed(object, references);
    references.AddTo(gatherer);
    AddLayers(object, gatherer);
}

std::wstring GroupOf(const IfcObjectDefinition& object) {
    const auto groups = GroupsOf(object);
    return groups.empty() ? std::wstring() : TextOf(groups.front()->m_GlobalId);
}

}  // namespace ZVSmartModel
