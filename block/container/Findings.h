#pragma once

#include <string>
#include <vector>

#include "ZVSmartZvg/BlockVerifier.h"
#include "stream/Failures.h"

namespace ZVSmartZvg {

/// Gathers what is wrong with a file.
class Findings {
  public:
    /// Thrown by the last finding that there is room for: a file of nothing but damage costs no
    /// more time than one with a little.
    struct Full {};

    explicit Findings(std::vector<SZVLGBlockFinding>& list) : list(list) { list.clear(); }

    void Add(unsigned long long position, const std::string& reason) {
        list.push_back({position, reason});
        if (list.size() == largestCount) throw Full();
    }

    /// Runs `check`; what it throws is a finding about `what`, unless memory ran out.
    template <class Check>
    bool Guard(unsigned long long position, const std::string& what, Check check) {
        try {
            check();
            return true;
        } catch (const ZVSmartFormat::CZVFTStreamException& damage) {
            if (ZVSmartFormat::IsLackOfMemory(damage)) throw;
            Add(position, what + ": " + damage.what());
            return false;
        }
    }

  private:
    static constexpr std::size_t largestCount = 1000;
    std::vector<SZVLGBlockFinding>& list;
};

}  // namespace ZVSmartZvg
