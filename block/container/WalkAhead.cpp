#include "container/WalkAhead.h"

#include <utility>

namespace ZVSmartZvg {

using ZVSmartFormat::CheckedInStream;
using ZVSmartFormat::DecodedBlock;
using ZVSmartFormat::u32;
using ZVSmartFormat::u64;

WalkAhead::~WalkAhead() {
    isEnding = true;
    geoBlocks.blocks.clear();
    floors.blocks.clear();
}

void WalkAhead::Begin(CheckedInStream& in, Section& section, const Find& find) noexcept {
    Queue(in, section, 0, find);
}

void WalkAhead::LookAhead(CheckedInStream& in, Section& section, u32 number,
                          const Find& find) noexcept {
    auto& blocks = section.blocks;
    const bool isInOrder = number == section.next || blocks.contains(number);
    section.next = number + 1;
    if (!isInOrder) return;
    blocks.erase(blocks.begin(), blocks.lower_bound(number));  // passed over
    Queue(in, section, number + 1, find);
}

/// Queues the section's blocks from `first` on. What is not there yet before them the caller
/// decodes.
void WalkAhead::Queue(CheckedInStream& in, Section& section, u32 first, const Find& find) noexcept {
    auto& blocks = section.blocks;
    u64 bytes = 0;
    for (const auto& [number, block] : blocks) bytes += block.Bytes();
    try {
        for (u32 number = first; number - first < queued && number >= first; ++number) {
            if (bytes >= mostQueuedBytes) return;
            if (blocks.contains(number) || !find(number)) continue;
            DecodingBlock::Use use;
            if (section.use) {
                use = [&section, number](const DecodedBlock& block) { section.use(number, block); };
            }
            std::optional<DecodingBlock> begun =
                DecodingBlock::Begin(in, threads, decodedLimit, use);
            if (!begun) continue;
            bytes += begun->Bytes();
            blocks.emplace(number, std::move(*begun));
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
