#pragma once

#include <map>
#include <utility>

#include "ZVSmartFormat/Stream.h"

namespace ZVSmartZvg {

using ZVSmartFormat::u32;

/// Decoded blocks by their numbers, a few at a time. A full cache gives up its lowest number,
/// whatever was used last.
template <class Block>
class DecodedCache {
  public:
    explicit DecodedCache(u32 limit = 0) : limit(limit) {}

    /// The block, valid until the next insertion; null where it is not here.
    const Block* Find(u32 number) const {
        const auto block = blocks.find(number);
        return block == blocks.end() ? nullptr : &block->second;
    }

    /// Adds a block that is not here. The cache stays as it was on a throw.
    const Block* Insert(u32 number, Block&& block) {
        std::map<u32, Block> added;
        added.emplace(number, std::move(block));
        if (blocks.size() >= limit) blocks.erase(blocks.begin());
        return &blocks.insert(added.extract(added.begin())).position->second;
    }

    void Clear() { blocks.clear(); }

  private:
    std::map<u32, Block> blocks;
    u32 limit;
};

}  // namespace ZVSmartZvg
