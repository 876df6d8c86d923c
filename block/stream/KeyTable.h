#pragma once

#include <string_view>
#include <vector>

#include "stream/RowStore.h"

namespace ZVSmartFormat {

/// Distinct keys, byte strings, numbered in the order they were added; found by hash.
class KeyTable {
  public:
    static constexpr u32 none = 0xFFFFFFFF;

    /// The number of `key`, or `none`.
    u32 Find(std::string_view key) const;
    /// Adds a key that is not there yet; its number is the count before. The table stays as it
    /// was on a throw.
    void Add(std::string_view key);
    std::string_view Key(u32 number) const { return keys.Row(number); }
    u32 Count() const { return keys.Count(); }
    void Clear();

  private:
    std::size_t SlotOf(std::string_view key) const;
    void Grow();

    RowStore keys;
    std::vector<u32> slots;  // key numbers by hash, open addressing, at most three quarters full
};

}  // namespace ZVSmartFormat
