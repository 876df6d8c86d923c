#pragma once

#include <algorithm>
#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "ZVSmartZvg/ParamFace.h"
#include "processing/ShapeIndex.h"

namespace ZVSmartZvg {

/// Shapes and the include keys of their geometries. A `Key` has
/// - `operator<`, the order in which a shape is looked for first;
/// - `Agrees(key)`: each number is within the tolerance;
/// - `TurnFrom(key)`: an optional turn of the other shape, about the local origin, with which it
///   agrees;
/// - `Signatures()`: two keys that agree, turned or not, have two that do.
template <class Key>
class IncludeTable {
  public:
    struct Match {
        const std::wstring& includeKey;
        CZVIMTransf turn;  ///< of the shape that was found
    };

    /// What the order finds, where that does agree; else the first shape added that agrees; else
    /// the first that does so when turned; else adds `key` under what `store(key)` returns. Where
    /// that throws, the table stays as it was.
    template <class Store>
    Match FindOrAdd(Key key, Store store) {
        const auto inOrder = entries.lower_bound(key);
        if (inOrder != entries.end() && inOrder->first.Agrees(key)) {
            return {inOrder->second.includeKey, {}};
        }
        const std::vector<ShapeSignature> signatures = key.Signatures();
        const std::vector<const Entry*> candidates = Candidates(signatures);
        for (const Entry* const entry : candidates) {
            if (entry->first.Agrees(key)) return {entry->second.includeKey, {}};
        }
        for (const Entry* const entry : candidates) {
            if (const auto turn = key.TurnFrom(entry->first)) {
                return {entry->second.includeKey, *turn};
            }
        }
        std::wstring includeKey = store(key);
        const auto added = entries.emplace_hint(inOrder, std::move(key),
                                                Stored{std::move(includeKey), entries.size()});
        for (const ShapeSignature& signature : signatures) index.Add(signature, &*added);
        return {added->second.includeKey, {}};
    }

  private:
    struct Stored {
        std::wstring includeKey;
        std::size_t number;  ///< in the order of adding
    };
    /// The order cannot tell all shapes apart that do not agree, hence several entries of one key.
    using Entries = std::multimap<Key, Stored>;
    using Entry = typename Entries::value_type;

    /// In the order of adding.
    std::vector<const Entry*> Candidates(const std::vector<ShapeSignature>& signatures) const {
        std::vector<const Entry*> found;
        for (const ShapeSignature& signature : signatures) index.Find(signature, found);
        std::sort(found.begin(), found.end(), [](const Entry* a, const Entry* b) {
            return a->second.number < b->second.number;
        });
        found.erase(std::unique(found.begin(), found.end()), found.end());
        return found;
    }

    Entries entries;
    ShapeIndex<Entry> index;  ///< entries do not move
};

}  // namespace ZVSmartZvg
