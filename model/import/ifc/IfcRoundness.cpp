#include "model/import/ifc/IfcRoundness.h"

#include <ifcpp/IFC4/include/IfcAxis1Placement.h>
#include <ifcpp/IFC4/include/IfcBooleanResult.h>
#include <ifcpp/IFC4/include/IfcCartesianPoint.h>
#include <ifcpp/IFC4/include/IfcCsgSolid.h>
#include <ifcpp/IFC4/include/IfcDirection.h>
#include <ifcpp/IFC4/include/IfcLengthMeasure.h>
#include <ifcpp/IFC4/include/IfcMappedItem.h>
#include <ifcpp/IFC4/include/IfcProduct.h>
#include <ifcpp/IFC4/include/IfcProductRepresentation.h>
#include <ifcpp/IFC4/include/IfcReal.h>
#include <ifcpp/IFC4/include/IfcRepresentation.h>
#include <ifcpp/IFC4/include/IfcRepresentationMap.h>
#include <ifcpp/IFC4/include/IfcRevolvedAreaSolid.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <set>

namespace ZVSmartModel {

namespace {

constexpr int fewestSides = 24, mostSides = 120;

using Found = std::vector<std::shared_ptr<IfcRevolvedAreaSolid>>;

/// Everything that items lead to, each once, however they lead to each other.
class Search {
  public:
    explicit Search(Found& found) : found(found) {}

    void Add(const std::shared_ptr<IfcRepresentation>& representation) {
        if (!representation) return;
        for (const auto& item : representation->m_Items) Add(item);
    }
    void Run() {
        while (!waiting.empty()) {
            const auto entity = waiting.back();
            waiting.pop_back();
            Visit(entity);
        }
    }

  private:
    void Add(const std::shared_ptr<BuildingObject>& object) {
        if (object && seen.insert(object.get()).second) waiting.push_back(object);
    }
    void Visit(const std::shared_ptr<BuildingObject>& object) {
        if (const auto solid = std::dynamic_pointer_cast<IfcRevolvedAreaSolid>(object)) {
            found.push_back(solid);
        } else if (const auto result = std::dynamic_pointer_cast<IfcBooleanResult>(object)) {
            Add(result->m_FirstOperand);
            Add(result->m_SecondOperand);
        } else if (const auto csg = std::dynamic_pointer_cast<IfcCsgSolid>(object)) {
            Add(csg->m_TreeRootExpression);
        } else if (const auto mapped = std::dynamic_pointer_cast<IfcMappedItem>(object)) {
            if (mapped->m_MappingSource) Add(mapped->m_MappingSource->m_MappedRepresentation);
        }
    }

    Found& found;
    std::vector<std::shared_ptr<BuildingObject>> waiting;
    std::set<const BuildingObject*> seen;
};

template <typename Number>
double NumberAt(const std::vector<std::shared_ptr<Number>>& numbers, std::size_t index) {
    return index < numbers.size() && numbers[index] ? numbers[index]->m_value : 0;
}

}  // namespace

int SidesOfCircle(double radius, double tolerance) {
    if (!(radius > tolerance)) return fewestSides;
    const double sides = std::numbers::pi / std::acos(1 - tolerance / radius);
    const double quarters = std::ceil(std::min(sides, double{mostSides}) / 4);
    return std::clamp(4 * static_cast<int>(quarters), fewestSides, mostSides);
}

Found RevolvedSolidsOf(const IfcProduct& element) {
    Found found;
    if (!element.m_Representation) return found;
    Search search(found);
    for (const auto& shown : element.m_Representation->m_Representations) search.Add(shown);
    search.Run();
    return found;
}

double DistanceFromAxis(const IfcRevolvedAreaSolid& solid, double x, double y,
                        double unitInMetres) {
    if (!solid.m_Axis || !solid.m_Axis->m_Location || !solid.m_Axis->m_Axis) return 0;
    const auto& place = solid.m_Axis->m_Location->m_Coordinates;
    const auto& direction = solid.m_Axis->m_Axis->m_DirectionRatios;
    const double dx = NumberAt(direction, 0);
    const double dy = NumberAt(direction, 1);
    const double length = std::hypot(dx, dy);  // the axis lies in the profile's plane
    if (length == 0) return 0;
    const double fromX = x - NumberAt(place, 0) * unitInMetres;
    const double fromY = y - NumberAt(place, 1) * unitInMetres;
    return std::abs(fromX * dy - fromY * dx) / length;
}

}  // namespace ZVSmartModel
