#include "container/WalkAhead.h"

#include <cstddef>
#include <utility>

namespace ZVSmartZvg {

using ZVSmartFormat::CheckedInStream;
using ZVSmartFormat::DecodedBlock;
using ZVSmartFormat::u32;

WalkAhead::~WalkAhead() {
    isEnding = true;
    geoBlocks.blocks.clear();
    floors.blocks.clear();
}

void WalkAhead::Begin(CheckedInStream& in, Section& section, const Find& find) noexcept {
    Decode(in, section, 0, threads, find);
}

void WalkAhead::LookAhead(CheckedInStream& in, Section& section, u32 number,
                          const Find& find) noexcept {
    auto& blocks = section.blocks;
    const bool isDecoding = blocks.contains(number);
    const bool isInOrder = isDecoding || number == section.next;
    section.next = number + 1;
    if (!isInOrder) return;
    blocks.erase(blocks.begin(), blocks.lower_bound(number));  // passed over
    // What is not there yet the caller decodes.
    Decode(in, section, number + 1, isDecoding ? threads : threads - 1, find);
}

/// Begins with the section's blocks from `first` on, as long as fewer than `room` are at work.
void WalkAhead::Decode(CheckedInStream& in, Section& section, u32 first, std::size_t room,
                       const Find& find) noexcept {
    auto& blocks = section.blocks;
    std::size_t working = 0;
    for (const auto& [number, block] : blocks) working += !block.IsDone();
    try {
        for (u32 number = first; number - first < threads && number >= first; ++number) {
            if (working >= room) return;
            if (blocks.contains(number) || !find(number)) continue;
            DecodingBlock::Use use;
            if (section.use) {
                use = [&section, number](const DecodedBlock& block) { section.use(number, block); };
            }
            std::optional<DecodingBlock> begun = DecodingBlock::Begin(in, decodedLimit, use);
            if (!begun) continue;
            blocks.emplace(number, std::move(*begun));
            ++working;
        }
    } catch (...) {
        return;
    }
}

bool WalkAhead::Take(Section& section, u32 number, DecodedBlock& block) {
    auto taken = section.blocks.extract(number);
    return !taken.empty() && taken.mapped().Take(block);
}

}  // namespace ZVSmartZvg
