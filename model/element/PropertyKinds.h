#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ZVSmartModel {

// How a property says what its value is. A stored property is a pair of texts, its name and its
// value as the source has it. One whose kind is not "text" is followed by a companion: the pair
// whose name is the property's and "@", and whose value is the kind and, behind a blank, the unit.
//
//     ("Dimensions.Length", "8.5") ("Dimensions.Length@", "length ft")
//     ("Walls.IsExternal", "true") ("Walls.IsExternal@", "boolean")
//     ("Walls.FireRating", "F90")
//
// A companion is known by its name alone, so a text has one, "text", where the property behind it
// would be taken for it. Companions have no companions.

/// A name and a value, as components and materials store them.
using PropertyPairs = std::vector<std::pair<std::wstring, std::wstring>>;

inline const std::wstring textKind = L"text";
/// The kind of a property that the source names and gives no value.
inline const std::wstring emptyKind = L"empty";

struct StoredProperty {
    std::wstring name;
    std::wstring value;            ///< as the source has it
    std::wstring kind = textKind;  ///< without blanks
    std::wstring unit;             ///< the unit's symbol; empty where there is none

    friend bool operator==(const StoredProperty&, const StoredProperty&) = default;
};

/// A stored property, in the texts of the pairs that tell it.
struct WideProperty {
    std::wstring_view set;   ///< what stands before the first dot; empty where there is none
    std::wstring_view name;  ///< what stands behind it
    std::wstring_view fullName, value, kind, unit;
};

/// The property that begins at pair `i`, which becomes the number of the pair behind it.
WideProperty TakeProperty(const PropertyPairs& pairs, std::size_t& i);

/// The value of a property of this kind as a number; none for texts and the like.
std::optional<double> NumberOf(std::string_view value, std::string_view kind);

/// The properties as they are stored.
PropertyPairs PairsOf(const std::vector<StoredProperty>& properties);

/// The properties of stored pairs, whoever wrote them; what has no companion is text.
std::vector<StoredProperty> PropertiesOfPairs(const PropertyPairs& pairs);

/// A number as a value: in the fewest digits that give it back.
std::wstring NumberText(double number);

/// The value with its unit, as people write it: "8.5 ft".
std::wstring ValueWithUnit(const StoredProperty& property);

}  // namespace ZVSmartModel
