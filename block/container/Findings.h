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
    /// Thrown where a check cannot go on for something that is a finding already.
    struct AlreadyFound {};

    explicit Findings(std::vector<SZVLGBlockFinding>& list) : list(list) { list.clear(); }

    std::size_t Count() const { return list.size(); }
    void Add(unsigned long long position, const std::string& reason) {
        list.push_back({position, reason});
        if (list.size() == largestCount) throw Full();
    }
    /// Adds what hangs on the finding of that number.
    void AppendTo(std::size_t number, const std::string& more) { list[number].reason += more; }
    /// Takes all but the first `count` back.
    void CutTo(std::size_t count) { list.resize(count); }

    /// Runs `check`; what it throws is a finding about `name()`, unless memory ran out.
    template <class Name, class Check>
    bool Guard(unsigned long long position, Name name, Check check) {
        try {
            check();
            return true;
        } catch (const AlreadyFound&) {
        } catch (const ZVSmartFormat::OverLimit&) {
            Add(position, name() + ": takes more memory than a reader allows by default");
        } catch (const ZVSmartFormat::CZVFTStreamException& damage) {
            if (ZVSmartFormat::IsLackOfMemory(damage)) throw;
            Add(position, name() + ": " + damage.what());
        }
        return false;
    }

  private:
    static constexpr std::size_t largestCount = 1000;
    std::vector<SZVLGBlockFinding>& list;
};

/// Faults that come in numbers: each kind becomes one finding, which tells the first and how many
/// more there are.
class Tally {
  public:
    /// Another fault of `kind`, a literal; `text()` tells it, and is asked for the first only.
    template <class Text>
    void Meet(const char* kind, Text text) {
        for (Kind& known : kinds) {
            if (known.name != kind) continue;
            ++known.more;
            return;
        }
        kinds.push_back({kind, text(), 0});
    }

    void Tell(unsigned long long position, Findings& findings) const {
        for (const Kind& kind : kinds) findings.Add(position, kind.first + More(kind.more));
    }

  private:
    struct Kind {
        std::string name;
        std::string first;
        unsigned long long more;
    };
    static std::string More(unsigned long long count) {
        if (count == 0) return "";
        return "; " + std::to_string(count) + (count == 1 ? " more does" : " more do");
    }

    std::vector<Kind> kinds;
};

}  // namespace ZVSmartZvg
