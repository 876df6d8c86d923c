#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ZVSmartModel/ModelApi.h"
#include "ZVSmartModel/Values.h"

namespace ZVSmartModel {

/// Where an element stands in a file: the number of its floor, and its number on that floor.
struct ElementIndex {
    /// Stands for no floor and no position.
    static constexpr unsigned int none = 0xFFFFFFFF;

    /// The number of the floor.
    unsigned int floor = none;
    /// The number on that floor.
    unsigned int position = none;

    /// Whether it is the same place.
    /// @{
    friend bool operator==(const ElementIndex& a, const ElementIndex& b) {
        return a.floor == b.floor && a.position == b.position;
    }
    friend bool operator!=(const ElementIndex& a, const ElementIndex& b) { return !(a == b); }
    /// @}
    /// In the order of the file.
    friend bool operator<(const ElementIndex& a, const ElementIndex& b) {
        return a.floor != b.floor ? a.floor < b.floor : a.position < b.position;
    }
};

/// What is said of an element or a material. docs/GUIDE.md lists the kinds and the units.
struct ZVSM_API Property {
    std::string set;            ///< such as "Pset_WallCommon"; empty for what is in no set
    std::string name;           ///< such as "IsExternal"
    std::string value;          ///< as the model's author wrote it
    std::string kind = "text";  ///< what the value is, such as "boolean" or "length"
    std::string unit;           ///< its symbol, such as "mm"; empty where there is none

    /// "SET.NAME", or the name alone.
    std::string FullName() const;
    /// The value as a number, in the unit; none for texts and the like.
    std::optional<double> Number() const;
};

/// What an element consists of; several of one element are its layers, in the model's order.
struct Material {
    /// Such as Brick; may be empty.
    std::string name;
    /// Such as masonry; may be empty.
    std::string category;
    std::optional<double> thickness;  ///< metres; none for what is no layer
    /// What else the model says of it.
    std::vector<Property> properties;
};

/// One element of a building model, with all that the file says of it but its body.
struct ZVSM_API Element {
    /// Where it stands.
    ElementIndex index;
    std::string guid;            ///< its GlobalId, or the name that it is known by
    std::string name;            ///< what people call it; may be empty
    std::string floorName;       ///< may be empty
    std::string className;       ///< such as IfcWall
    std::string predefinedType;  ///< such as SOLIDWALL; may be empty
    std::string typeName;        ///< of its type; may be empty
    std::string materialName;    ///< of its class, mostly its main material or style; may be empty
    /// Each may be empty.
    /// @{
    std::string buildingName, siteName;
    /// @}
    std::optional<Rgba> colour;        ///< its own, or its class's; bodies may have others
    std::vector<std::string> parents;  ///< GUIDs of its host and of what it is a part of
    std::string group;                 ///< GUID of the first group or zone it is in; may be empty
    std::vector<Property> properties;  ///< in the file's order
    /// Its layers, or what else it consists of.
    std::vector<Material> materials;

    /// The first property of this set and name; null where there is none.
    const Property* Find(const std::string& set, const std::string& name) const;
};

}  // namespace ZVSmartModel
