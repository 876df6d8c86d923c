#include "model/import/ifc/IfcPlanCurves.h"

#include <ifcpp/IFC4/include/IfcAnnotationFillArea.h>
#include <ifcpp/IFC4/include/IfcAxis2Placement.h>
#include <ifcpp/IFC4/include/IfcCartesianTransformationOperator.h>
#include <ifcpp/IFC4/include/IfcCurve.h>
#include <ifcpp/IFC4/include/IfcGeometricSet.h>
#include <ifcpp/IFC4/include/IfcGeometricSetSelect.h>
#include <ifcpp/IFC4/include/IfcLabel.h>
#include <ifcpp/IFC4/include/IfcMappedItem.h>
#include <ifcpp/IFC4/include/IfcProduct.h>
#include <ifcpp/IFC4/include/IfcProductRepresentation.h>
#include <ifcpp/IFC4/include/IfcRepresentation.h>
#include <ifcpp/IFC4/include/IfcRepresentationItem.h>
#include <ifcpp/IFC4/include/IfcRepresentationMap.h>

#include <algorithm>

#include "model/import/ifc/IfcCurves.h"
#include "model/import/ifc/IfcFrames.h"
#include "model/import/ifc/Texts.h"

namespace ZVSmartModel {

namespace {

/// Mappings of mappings end here: files may map in circles.
constexpr int deepestMapping = 8;

bool IsPlan(const std::wstring& identifier) {
    constexpr const wchar_t* names[] = {L"FootPrint", L"Axis",        L"Plan",
                                        L"Boundary",  L"WalkingLine", L"Annotation"};
    return std::any_of(std::begin(names), std::end(names),
                       [&](const wchar_t* name) { return identifier == name; });
}

/// An item and what places it.
struct PlacedItem {
    std::shared_ptr<BuildingObject> item;
    Transform toElement = identityTransform;
    int mappings = 0;
};

/// Takes one representation apart into curves.
class Gatherer {
  public:
    Gatherer(const std::wstring& name, const IfcUnits& units) : units(units), name(name) {}

    std::vector<ModelCurves> Gather(const IfcRepresentation& representation) {
        Push(representation.m_Items, identityTransform, 0);
        while (!waiting.empty()) {
            const PlacedItem next = waiting.back();
            waiting.pop_back();
            Take(next);
        }
        loose.name = name;
        if (!loose.IsEmpty()) gathered.push_back(std::move(loose));
        return std::move(gathered);
    }

  private:
    template <typename Items>
    void Push(const Items& items, const Transform& toElement, int mappings) {
        constexpr std::size_t mostWaiting = 100000;
        for (auto item = items.rbegin(); item != items.rend(); ++item) {
            if (waiting.size() < mostWaiting) waiting.push_back({*item, toElement, mappings});
        }
    }

    void Take(const PlacedItem& placed) {
        if (const auto mapped = std::dynamic_pointer_cast<IfcMappedItem>(placed.item)) {
            TakeMapped(*mapped, placed);
        } else if (const auto set = std::dynamic_pointer_cast<IfcGeometricSet>(placed.item)) {
            Push(set->m_Elements, placed.toElement, placed.mappings);
        } else if (const auto area =
                       std::dynamic_pointer_cast<IfcAnnotationFillArea>(placed.item)) {
            Push(area->m_InnerBoundaries, placed.toElement, placed.mappings);
            waiting.push_back({area->m_OuterBoundary, placed.toElement, placed.mappings});
        } else if (const auto curve = std::dynamic_pointer_cast<IfcCurve>(placed.item)) {
            TakeCurve(curve, placed.toElement);
        }
    }

    void TakeMapped(const IfcMappedItem& mapped, const PlacedItem& placed) {
        const auto& source = mapped.m_MappingSource;
        if (!source || !source->m_MappedRepresentation) return;
        if (placed.mappings >= deepestMapping || ++mappingsTaken > mostMappings) return;
        const Transform origin = FrameOf(source->m_MappingOrigin);
        const Transform mapping = Combined(FrameOf(mapped.m_MappingTarget), origin);
        Push(source->m_MappedRepresentation->m_Items, Combined(placed.toElement, mapping),
             placed.mappings + 1);
    }

    void TakeCurve(const std::shared_ptr<IfcCurve>& curve, const Transform& toElement) {
        const IfcCurveMaker maker(toElement, units);
        if (maker.AddWhole(curve, loose)) return;
        ModelCurves chain;
        chain.name = name;
        maker.AddPieces(curve, chain);
        if (!chain.IsEmpty()) gathered.push_back(std::move(chain));
    }

    static constexpr int mostMappings = 10000;

    IfcUnits units;
    std::wstring name;
    std::vector<PlacedItem> waiting;
    int mappingsTaken = 0;
    ModelCurves loose;  ///< what needs no chaining
    std::vector<ModelCurves> gathered;
};

}  // namespace

std::vector<ModelCurves> PlanCurvesOf(const IfcProduct& element, const IfcUnits& units) {
    std::vector<ModelCurves> all;
    if (!element.m_Representation) return all;
    for (const auto& representation : element.m_Representation->m_Representations) {
        if (!representation) continue;
        const std::wstring identifier = TextOf(representation->m_RepresentationIdentifier);
        if (!IsPlan(identifier)) continue;
        for (ModelCurves& curves : Gatherer(identifier, units).Gather(*representation)) {
            all.push_back(std::move(curves));
        }
    }
    return all;
}

}  // namespace ZVSmartModel
