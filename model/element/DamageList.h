#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "ZVSmartModel/BlockFile.h"

namespace ZVSmartModel {

/// Different damages in the order in which they were met, as many as are told apart.
class DamageList {
  public:
    static constexpr std::size_t most = 1000;

    /// The same damage may be met again and again.
    void Add(const Damage& damage) {
        if (damages.size() == most) return;
        if (known.emplace(damage.position, damage.reason).second) damages.push_back(damage);
    }

    const std::vector<Damage>& All() const { return damages; }

  private:
    std::vector<Damage> damages;
    std::set<std::pair<std::uint64_t, std::string>> known;  ///< the same
};

}  // namespace ZVSmartModel
