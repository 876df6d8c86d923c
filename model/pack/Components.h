#pragma once

#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "ZVSmartZvg/Comp.h"
#include "model/import/Model.h"
#include "model/pack/ShapeRecords.h"

namespace ZVSmartModel {

/// Makes the components of a block file out of a model's elements, one after another.
///
/// Storeys are floors, numbered as they were added; elements without one are on the floor
/// "unassigned", which has the next number when it is first needed.
/// Level 2 is the entity type, level 3 the name of the type, level 4 the material's name, or the
/// style's, with the colour of the first such element; an element of another colour has it as its
/// own. Level 2b is the predefined type. The owner is the building, and the
/// site behind it. A component is known by its element's GlobalId; its group is the first one that
/// the model puts it in.
///
/// Shapes and bodies are stored under short names that count them in 36 digits, s10 s11 ... s1z
/// s210 s211 ...: the digit behind the letter says how many follow, so that names sort as they
/// count. What is stored in that order lies in it, which takes next to nothing in the table of
/// names, where a GlobalId takes twenty bytes, and as much less time whenever the file is opened.
/// With ten digits it would take a fifth more.
class ComponentMaker {
  public:
    /// `version` is the format's.
    explicit ComponentMaker(unsigned int version) : version(version) {}

    /// Elements refer to what they have in common by its number, counted from 0 as it was added.
    /// @{
    void AddStorey(const ModelStorey& storey);
    void AddBuilding(const ModelBuilding& building) { buildings.push_back(building); }
    void AddShape(ShapeSummary shape) { shapes.push_back(std::move(shape)); }
    /// @}

    /// The name under which the shape is to be stored, before anything places it. Call it once for
    /// each, in the order of storing.
    const std::wstring& NameShape(std::size_t shape);

    /// Whoever knows the elements beforehand may have each lend its colour to its class, before the
    /// first is made: a class whose first element has no colour then takes that of a later one.
    void LendColour(const ModelElement& element);

    ZVSmartZvg::SZVLGZvgComp Make(const ModelElement& element);

    const std::vector<ModelStorey>& Storeys() const { return storeys; }
    const std::vector<ShapeSummary>& Shapes() const { return shapes; }

  private:
    /// The names of levels 2, 3 and 4, under which a colour is stored once.
    using ClassPath = std::tuple<std::wstring, std::wstring, std::wstring>;

    void SetFloor(const ModelElement& element, ZVSmartZvg::SZVLGZvgComp& comp);
    void SetOwner(const ModelElement& element, ZVSmartZvg::SZVLGZvgComp& comp) const;
    void SetClasses(const ModelElement& element, ZVSmartZvg::SZVLGZvgComp& comp);
    void SetGeometry(const ModelElement& element, ZVSmartZvg::SZVLGZvgComp& comp);

    ClassPath PathOf(const ModelElement& element) const;
    std::optional<Rgba> ColourOf(const ModelElement& element) const;
    /// The shape with the largest part of the element's body that has a colour; null where none
    /// has.
    const ShapeSummary* MainShape(const ModelElement& element) const;

    unsigned int version;
    std::vector<ModelStorey> storeys;
    std::vector<ZVSmartZvg::u32> storeyOrders;
    std::optional<ZVSmartZvg::u32> unassignedOrder;
    std::vector<ModelBuilding> buildings;
    std::vector<ShapeSummary> shapes;
    std::size_t namedShapes = 0, namedBodies = 0;
    std::map<ClassPath, std::optional<Rgba>> colourByClass;
    /// How many names were seen under each table's parents, and each name's number.
    std::map<std::wstring, std::map<std::wstring, ZVSmartZvg::u32>> numberByName;
};

}  // namespace ZVSmartModel
