#pragma once

#include <memory>
#include <vector>

#include "tools/zvg/import/Model.h"

class IfcElement;
class IfcMaterial;

/// One material of an element as a file gives it: alone, in a list, or as a layer, profile or
/// constituent.
struct IfcMaterialUse {
    std::shared_ptr<IfcMaterial> material;  ///< never null
    double layerThickness = 0;              ///< in the file's unit; 0 where it is no layer
};

/// The materials of an element, or else of its type, in the file's order.
std::vector<IfcMaterialUse> MaterialUsesOf(const IfcElement& element);

/// `unitInMetres` converts the file's lengths.
ModelMaterial MaterialOf(const IfcMaterialUse& use, double unitInMetres);
