#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "model/element/PropertyKinds.h"

namespace ZVSmartModel {

/// Gathers the properties of one object. The first of equal names stays, unless it is empty and
/// the other is not.
class PropertyGatherer {
  public:
    void Add(StoredProperty property);
    void AddText(const std::wstring& name, const std::wstring& value);

    /// What is added from now on gives way without being counted as dropped: a type's values to
    /// those of the object.
    void BeginDefaults() { defaults = true; }

    /// The name of a set that is not asked for twice: "Zone", then "Zone (2)".
    std::wstring FreeSet(const std::wstring& name);

    /// How many values were given up for another of the same name that differs.
    std::size_t Dropped() const { return dropped; }

    std::vector<StoredProperty> Take() { return std::move(properties); }

  private:
    std::vector<StoredProperty> properties;
    std::map<std::wstring, std::size_t> placeByName;
    std::map<std::wstring, int> timesAsked;
    std::size_t dropped = 0;
    bool defaults = false;
};

}  // namespace ZVSmartModel
