#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Values.h"

namespace ZVSmartModel {

/// A value of both files, which differs.
template <class Value>
struct Changed {
    /// Its values.
    /// @{
    Value a, b;
    /// @}
};

/// A named value that differs; a side that does not have it has none.
struct ValueChange {
    /// What the value is of.
    std::string name;
    /// Its values.
    /// @{
    std::optional<std::string> a, b;
    /// @}
};

/// What became of a floor. Floors are known by their names, and of what is left by their order.
struct FloorDifference {
    /// Its number in the files that have it.
    /// @{
    std::optional<unsigned int> inA, inB;
    /// @}
    std::string name;  ///< in the first file that has it
    /// Its names.
    std::optional<Changed<std::string>> renamed;
    /// Its orders.
    std::optional<Changed<unsigned int>> order;
    /// Its values, metres.
    /// @{
    std::optional<Changed<double>> elevation, height;
    /// @}
};

/// What became of an element. Elements are known by their GUIDs, those on one floor first.
struct ElementDifference {
    /// Where it stands in the files that have it.
    /// @{
    std::optional<ElementIndex> inA, inB;
    /// @}
    /// In both files.
    std::string guid;
    /// In the first file that has it; `name` may be empty.
    /// @{
    std::string className, name;
    /// @}
    std::optional<Changed<std::string>> floor;  ///< the names of the floors that it moved between
    std::vector<ValueChange> properties;        ///< by "SET.NAME"; values with their units
    std::vector<ValueChange> classes;           ///< by level: "2", "3", "4" or "2b"
    /// What else differs: "owner", "groupGuidName", "relatedGuidNames", "appearance", "materials"
    /// or "geoIds".
    std::vector<std::string> fields;
    /// What of `fields` people can read, by the same names; colours as "#RRGGBBAA".
    std::vector<ValueChange> fieldValues;
    bool geometry = false;  ///< whether its body differs, in its form or in its place
    /// Metres between the middles of its bodies, where the boxes around them are of one size and
    /// the middles are apart: it was moved.
    std::optional<double> distance;
};

/// One difference; either a floor's or an element's is there.
struct Difference {
    /// What became of it.
    enum class Kind {
        Added,
        Removed,
        Changed,
        Moved,   ///< an element to another floor; it may have changed as well
        Renamed  ///< a floor; it may have changed as well
    };

    /// What became of it.
    Kind kind = Kind::Changed;
    /// Of a floor; else none.
    std::optional<FloorDifference> floor;
    /// Of an element; else none.
    std::optional<ElementDifference> element;
};

/// Hands what differs in `b` from `a` to `use`, floors first, each in the order of `a` and what is
/// only in `b` behind it, until `use` answers false. `use` may ask the files. What the files say of
/// themselves, their previews, the order of elements and the names of shapes and bodies are not
/// compared.
///
/// Reads both files whole, and keeps a few hundred bytes of each element. Throws Error: Damaged,
/// before anything is handed out, where something cannot be read; Internal; Cancelled.
ZVSM_API void Compare(const BlockFile& a, const BlockFile& b,
                      const std::function<bool(const Difference& difference)>& use,
                      const Progress& progress = {});

}  // namespace ZVSmartModel
