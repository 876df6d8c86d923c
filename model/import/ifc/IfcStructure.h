#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "model/import/Model.h"

class BuildingModel;
class IfcObjectDefinition;
class IfcBuilding;
class IfcBuildingStorey;

namespace ZVSmartModel {

/// The storeys and buildings of a file, and who belongs where. Relations that run in a circle
/// end nowhere.
class IfcStructure {
  public:
    explicit IfcStructure(const BuildingModel& model, double unitInMetres);

    std::vector<ModelStorey> storeys;      ///< by elevation
    std::vector<ModelBuilding> buildings;  ///< in the file's order

    /// Fills in the element's storey and building, and the elements it belongs to: what it is a
    /// part of, and the wall whose opening it fills. A storey stands on its own floor; site,
    /// project and groups are on none.
    void Place(const IfcObjectDefinition& source, ModelElement& element) const;

  private:
    void AddStoreys(const std::vector<std::shared_ptr<IfcBuildingStorey>>& found, double unit);
    void AddBuilding(const IfcBuilding& building);
    std::shared_ptr<IfcObjectDefinition> Above(const IfcObjectDefinition& object) const;
    void PlaceAt(int entity, ModelElement& element) const;

    std::map<int, std::size_t> storeyByEntity, buildingByEntity;
    /// What contains an object, for those that do not know it themselves.
    std::map<int, std::shared_ptr<IfcObjectDefinition>> containerByEntity;
};

}  // namespace ZVSmartModel
