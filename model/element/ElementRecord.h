#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ZVSmartModel/Body.h"
#include "ZVSmartModel/Element.h"
#include "ZVSmartZvg/Comp.h"

namespace ZVSmartModel {

/// A component as an element in plain values.
Element ElementOf(const ZVSmartZvg::SZVLGZvgComp& comp, ElementIndex index,
                  const std::string& floorName);

/// What people call a component: its property "Element.Name"; empty where it has none.
std::wstring_view WideNameOf(const ZVSmartZvg::SZVLGZvgComp& comp);
std::string NameOf(const ZVSmartZvg::SZVLGZvgComp& comp);
/// For who wants the name and no other property.
ZVSmartZvg::SZVLGCompParts NameAlone();
/// For who wants no property at all.
ZVSmartZvg::SZVLGCompParts NoProperties();

/// The colour that display attributes hold, if any.
std::optional<Rgba> ColourOf(const ZVSmartZvg::SZVLGZvgDisplayAttr& attr);
/// Its own colour, or its class's.
std::optional<Rgba> ColourOf(const ZVSmartZvg::SZVLGZvgComp& comp);

/// What display attributes make of a surface; they hold a colour. `otherName` is its name where
/// they have none.
Look LookOf(const ZVSmartZvg::SZVLGZvgDisplayAttr& attr, std::string_view otherName);
/// The look that a class gives to what has none; none where it holds no colour.
std::optional<Look> ClassLook(const ZVSmartZvg::SZVLGZvgComp& comp);
/// The look of what a component places without one: of its own display attributes, else of its
/// class's; the default where none holds a colour.
Look OwnLook(const ZVSmartZvg::SZVLGZvgComp& comp);

/// A colour as "#RRGGBBAA".
std::string ColourText(const Rgba& colour);

/// What it consists of.
std::vector<Material> MaterialsOf(const ZVSmartZvg::SZVLGZvgComp& comp);

/// Stored pairs as properties: the set is what stands before the first dot.
std::vector<Property> PublicProperties(const ZVSmartZvg::PropertyList& pairs);

/// Properties as they are stored.
ZVSmartZvg::PropertyList PairsOf(const std::vector<Property>& properties);

}  // namespace ZVSmartModel
