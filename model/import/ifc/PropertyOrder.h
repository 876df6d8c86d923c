#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "model/element/PropertyKinds.h"

namespace ZVSmartModel {

/// The one order in which all objects of a model have their properties: sets by their first use,
/// and within a set the names by theirs. IFC gives neither an order, some exporters shuffle both
/// from object to object, and what follows each other in ever the same way compresses.
class PropertyOrder {
  public:
    /// Brings the properties of the next object into that order.
    void Apply(std::vector<StoredProperty>& properties);

  private:
    using Ranks = std::unordered_map<std::wstring, std::size_t>;

    Ranks sets, names;
};

}  // namespace ZVSmartModel
