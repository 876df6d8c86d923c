#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "component/IdentityKey.h"
#include "container/Findings.h"

namespace ZVSmartZvg {

/// The records of one table by what identifies them, to tell of those that share it: a writer
/// stores an identity once.
class Identities {
  public:
    void Meet(u32 record, const std::wstring& name) { Add(record, IdentityKey(name)); }
    /// A GUID name that says nothing identifies nothing.
    void Meet(u32 record, const SerialKey& key) {
        if (key.name != L"none") Add(record, IdentityKey(key));
    }
    void Meet(u32 record, const SZVLGZvgGeoId& row) {
        if (row.guidName.name != L"none" || !row.textA.empty() || !row.textB.empty())
            Add(record, IdentityKey(row));
    }

    /// One finding at most about the table of that name.
    template <class Name>
    void Tell(unsigned long long position, Name table, Findings& findings) {
        std::sort(keys.begin(), keys.end());
        Tally tally;
        for (std::size_t i = 1; i < keys.size(); ++i) {
            if (keys[i].first != keys[i - 1].first) continue;
            tally.Meet("identity", [&] {
                return table() + ": record " + std::to_string(keys[i].second) +
                       " has the identity of record " + std::to_string(keys[i - 1].second);
            });
        }
        tally.Tell(position, findings);
    }

  private:
    void Add(u32 record, std::string key) { keys.emplace_back(std::move(key), record); }

    std::vector<std::pair<std::string, u32>> keys;
};

}  // namespace ZVSmartZvg
