#pragma once

#include <atomic>
#include <functional>
#include <map>

#include "container/DecodingBlock.h"
#include "stream/CheckedInStream.h"
#include "stream/CompressedBlock.h"
#include "stream/WorkerThreads.h"

namespace ZVSmartZvg {

/// What a walk through a file asks for next, decoded in threads meanwhile. A walk asks for the
/// floors by ascending numbers and for the geometry blocks as well, in whatever turns; where it
/// leaves that order nothing is decoded ahead until it is back in it. The stream is read by the
/// calling thread alone.
class WalkAhead {
  public:
    /// So many blocks are decoded at once.
    WalkAhead(unsigned int threads, ZVSmartFormat::u64 decodedLimit)
        : queued(queuedPerThread * threads), decodedLimit(decodedLimit), threads(threads) {}
    /// Waits for the threads.
    ~WalkAhead();
    WalkAhead(const WalkAhead&) = delete;
    WalkAhead& operator=(const WalkAhead&) = delete;

    /// Whether what threads are still at is not wanted any more.
    bool IsEnding() const { return isEnding; }

    /// The blocks of a section that are queued, and where the walk is in it.
    struct Section {
        /// What the thread that has decoded a block does with it; may be null.
        std::function<void(ZVSmartFormat::u32 number, const ZVSmartFormat::DecodedBlock& block)>
            use;
        ZVSmartFormat::u32 next = 0;
        std::map<ZVSmartFormat::u32, DecodingBlock> blocks;
    };
    Section floors, geoBlocks;

    /// Moves the stream to a block by its number; false where it need not be decoded. May throw.
    using Find = std::function<bool(ZVSmartFormat::u32 number)>;

    /// Queues the section's first blocks. Passes on nothing that is wrong: who asks for a
    /// block is told. Leaves the stream anywhere.
    void Begin(ZVSmartFormat::CheckedInStream& in, Section& section, const Find& find) noexcept;

    /// The same of what follows block `number`, which is about to be asked for.
    void LookAhead(ZVSmartFormat::CheckedInStream& in, Section& section, ZVSmartFormat::u32 number,
                   const Find& find) noexcept;

    /// Waits for block `number`. False where it is not decoded ahead, or does not decode.
    static bool Take(Section& section, ZVSmartFormat::u32 number,
                     ZVSmartFormat::DecodedBlock& block);

  private:
    void Queue(ZVSmartFormat::CheckedInStream& in, Section& section, ZVSmartFormat::u32 first,
               const Find& find) noexcept;

    const ZVSmartFormat::u32 queued;  // of each section
    ZVSmartFormat::u64 decodedLimit;
    std::atomic<bool> isEnding = false;
    ZVSmartFormat::WorkerThreads threads;  // which use the sections
};

}  // namespace ZVSmartZvg
