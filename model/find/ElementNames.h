#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "ZVSmartModel/Element.h"
#include "model/element/OpenedBlock.h"

namespace ZVSmartModel {

/// Where the elements of a file stand, by what they are known by.
class ElementNames {
  public:
    /// Reads every component of the file once.
    explicit ElementNames(OpenedBlock& block);

    using Places = std::vector<ElementIndex>;

    /// In the file's order; empty where there is none.
    /// @{
    const Places& OfGuid(const std::string& guid) const { return Find(byGuid, guid); }
    const Places& OfName(const std::string& name) const { return Find(byName, name); }
    const Places& OfParent(const std::string& guid) const { return Find(byParent, guid); }
    /// @}

    /// Throws Error, Damaged, where not every component could be read.
    void ThrowIfPartial() const;

  private:
    using Table = std::unordered_map<std::string, Places>;

    static const Places& Find(const Table& table, const std::string& key);

    Table byGuid, byName, byParent;
    std::optional<Error> damage;  ///< what kept components back
};

/// Those of a file, which is being asked: read when they are first wanted, then kept. Throws Error,
/// Damaged, where the budget does not hold them.
const ElementNames& NamesOf(BlockFile::Imp& imp, OpenedBlock& block);

}  // namespace ZVSmartModel
