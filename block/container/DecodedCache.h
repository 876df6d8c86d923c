#pragma once

#include <algorithm>
#include <map>
#include <utility>

#include "ZVSmartFormat/Stream.h"

namespace ZVSmartZvg {

using ZVSmartFormat::u32;
using ZVSmartFormat::u64;

/// Decoded blocks by their numbers, each with the bytes that it takes and when it was used last. A
/// cache that is full by its number of blocks gives up the lowest number, whatever was used last;
/// one that is kept within bytes is told to give up what was used longest ago.
template <class Block>
class DecodedCache {
  public:
    explicit DecodedCache(u32 limit = 0) : limit(limit) {}

    /// The block, valid until the next insertion; null where it is not here. `now` grows with each
    /// use.
    const Block* Find(u32 number, u64 now) {
        const auto found = blocks.find(number);
        if (found == blocks.end()) return nullptr;
        found->second.lastUse = now;
        return &found->second.block;
    }

    bool Holds(u32 number) const { return blocks.contains(number); }

    /// Adds a block that is not here. The cache stays as it was on a throw.
    const Block* Insert(u32 number, Block&& block, u64 byteCount, u64 now) {
        std::map<u32, Kept> added;
        added.emplace(number, Kept{std::move(block), byteCount, now});
        if (blocks.size() >= limit) Drop(blocks.begin());
        bytes += byteCount;
        return &blocks.insert(added.extract(added.begin())).position->second.block;
    }

    bool IsEmpty() const { return blocks.empty(); }
    bool IsSingle() const { return blocks.size() == 1; }
    u64 Bytes() const { return bytes; }
    /// When the block was used that was used longest ago; there is one.
    u64 OldestUse() const { return Oldest(*this)->second.lastUse; }
    void DropOldest() { Drop(Oldest(*this)); }

    void Clear() {
        blocks.clear();
        bytes = 0;
    }

  private:
    struct Kept {
        Block block;
        u64 bytes;
        u64 lastUse;
    };

    template <class Cache>
    static auto Oldest(Cache& cache) {
        return std::min_element(
            cache.blocks.begin(), cache.blocks.end(),
            [](const auto& a, const auto& b) { return a.second.lastUse < b.second.lastUse; });
    }
    void Drop(typename std::map<u32, Kept>::iterator block) {
        bytes -= block->second.bytes;
        blocks.erase(block);
    }

    std::map<u32, Kept> blocks;
    u32 limit;
    u64 bytes = 0;
};

}  // namespace ZVSmartZvg
