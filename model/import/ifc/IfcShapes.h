#pragma once

#include <memory>
#include <vector>

#include "model/import/ImportReport.h"
#include "model/import/Model.h"
#include "model/import/ifc/IfcMaterials.h"

class BuildingModel;
class IfcProduct;

namespace ZVSmartModel {

/// Makes the bodies of elements, openings cut out.
class IfcShapes {
  public:
    /// `tolerance`: metres that lines may be off the curves they stand for. `report` is borrowed.
    IfcShapes(const std::shared_ptr<BuildingModel>& model, double tolerance,
              const ImportReport& report);
    ~IfcShapes();

    struct Body {
        ModelShape shape;  ///< in the element's own coordinates, metres; not yet in one form
        Transform placement = identityTransform;
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

}  // namespace ZVSmartModel
