#pragma once

#include <memory>
#include <vector>

#include "tools/zvg/import/ImportReport.h"
#include "tools/zvg/import/Model.h"
#include "tools/zvg/import/ifc/IfcMaterials.h"

class BuildingModel;
class IfcProduct;

/// Makes the bodies of elements, openings cut out.
class IfcShapes {
  public:
    /// `tolerance`: metres that lines may be off the curves they stand for. `report` is borrowed.
    IfcShapes(const std::shared_ptr<BuildingModel>& model, double tolerance,
              const ImportReport& report);
    ~IfcShapes();

    struct Body {
        Shape shape;  ///< in the element's own coordinates, metres; not yet in one form
        Placement placement = identityPlacement;
    };

    /// The product's body; without parts where it has none. What cannot be made is left out with
    /// a warning. Surfaces without a colour of their own take that of the first material that
    /// has one.
    Body BodyOf(const std::shared_ptr<IfcProduct>& product,
                const std::vector<IfcMaterialUse>& materials);

  private:
    class Maker;
    std::unique_ptr<Maker> maker;
};
