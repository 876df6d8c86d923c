#pragma once

#include <memory>
#include <vector>

#include "model/import/Model.h"
#include "model/import/ifc/IfcUnitSymbols.h"

class IfcObjectDefinition;
class IfcMaterial;

namespace ZVSmartModel {

/// One material of an element as a file gives it: alone, in a list, or as a layer, profile or
/// constituent.
struct IfcMaterialUse {
    std::shared_ptr<IfcMaterial> material;  ///< never null
    double layerThickness = 0;              ///< in the file's unit; 0 where it is no layer
};

/// The materials of an object, or else of its type, in the file's order.
std::vector<IfcMaterialUse> MaterialUsesOf(const IfcObjectDefinition& object);

/// `unitInMetres` converts the thickness of a layer; the material's own properties stay in the
/// file's units.
ModelMaterial MaterialOf(const IfcMaterialUse& use, double unitInMetres,
                         const IfcUnitSymbols& units);

}  // namespace ZVSmartModel
