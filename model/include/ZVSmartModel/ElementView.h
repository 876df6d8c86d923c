#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "ZVSmartModel/Element.h"

namespace ZVSmartModel {

/// A property as it is looked at; see Property.
struct ZVSM_API PropertyView {
    /// Each may be empty but the name; of a kind that is not told, "text".
    /// @{
    std::string_view set, name, value, kind, unit;
    /// @}

    /// The value as a number, in the unit; none for texts and the like.
    std::optional<double> Number() const;
};

/// A material as it is looked at; see Material.
struct MaterialView {
    /// Each may be empty.
    /// @{
    std::string_view name, category;
    /// @}
    std::optional<double> thickness;  ///< metres; none for what is no layer
    /// What else the model says of it.
    std::vector<PropertyView> properties;
};

/// An element as it is looked at, without texts of its own: see Element, whose fields it has. What
/// it looks at is there as long as who handed it out says.
struct ZVSM_API ElementView {
    /// Where it stands.
    ElementIndex index;
    std::string_view guid;  ///< its GlobalId, or the name that it is known by
    /// Each may be empty.
    /// @{
    std::string_view name, floorName, className, predefinedType, typeName, materialName,
        buildingName, siteName;
    /// @}
    std::optional<Rgba> colour;             ///< its own, or its class's; bodies may have others
    std::vector<std::string_view> parents;  ///< GUIDs of its host and of what it is a part of
    std::string_view group;                 ///< GUID of the first group or zone it is in
    std::vector<PropertyView> properties;   ///< in the file's order
    /// Its layers, or what else it consists of.
    std::vector<MaterialView> materials;

    /// The first property of this set and name; null where there is none.
    const PropertyView* Find(std::string_view set, std::string_view name) const;
    /// Replaces `element` by the same with texts of its own. One that is copied into again takes
    /// hardly any memory anew.
    void CopyTo(Element& element) const;
};

}  // namespace ZVSmartModel
