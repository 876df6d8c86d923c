#pragma once

#include <map>
#include <optional>
#include <string>
#include <tuple>

#include "ZVSmartZvg/Comp.h"
#include "model/import/Model.h"

namespace ZVSmartModel {

/// Makes the components of a block file out of a model's elements.
///
/// Storeys are floors, numbered by elevation; elements without one are on the floor "unassigned".
/// Level 2 is the entity type, level 3 the name of the type, level 4 the material's name, or the
/// style's, with its colour; level 2b is the predefined type. The owner is the building, and the
/// site behind it. A component is known by its element's GlobalId, under which its geometry is
/// stored as well; its group is the first one that the model puts it in.
class ComponentMaker {
  public:
    /// `model` is borrowed. `version` is the format's.
    ComponentMaker(const Model& model, unsigned int version);

    ZVSmartZvg::SZVLGZvgComp Make(const ModelElement& element);

  private:
    /// The names of levels 2, 3 and 4, under which a colour is stored once.
    using ClassPath = std::tuple<std::wstring, std::wstring, std::wstring>;

    void SetFloor(const ModelElement& element, ZVSmartZvg::SZVLGZvgComp& comp) const;
    void SetOwner(const ModelElement& element, ZVSmartZvg::SZVLGZvgComp& comp) const;
    void SetClasses(const ModelElement& element, ZVSmartZvg::SZVLGZvgComp& comp);
    void SetGeometry(const ModelElement& element, ZVSmartZvg::SZVLGZvgComp& comp) const;

    ClassPath PathOf(const ModelElement& element) const;
    std::optional<Rgba> ColourOf(const ModelElement& element) const;
    /// The largest part of the element's body that has a colour; null where none has.
    const ShapePart* MainPart(const ModelElement& element) const;

    const Model& model;
    unsigned int version;
    std::map<ClassPath, Rgba> colourByClass;  ///< of the first element that has one
    /// How many names were seen under each table's parents, and each name's number.
    std::map<std::wstring, std::map<std::wstring, ZVSmartZvg::u32>> numberByName;
};

}  // namespace ZVSmartModel
