#pragma once

#include <cstddef>
#include <deque>
#include <functional>

#include "container/DecodingBlock.h"
#include "stream/CheckedInStream.h"
#include "stream/CompressedBlock.h"
#include "stream/WorkerThreads.h"

namespace ZVSmartZvg {

/// Decodes the blocks that come next in a section, in threads, while one is looked at. The stream
/// is read by the calling thread alone. What a block decodes to does not depend on it, and that one
/// cannot be decoded ahead is never an error.
class BlocksAhead {
  public:
    /// Moves a stream from the end of a block to where the next one begins. May throw.
    using Advance = std::function<void(ZVSmartFormat::CheckedInStream& in)>;

    /// With `threads` of 0 or 1 no thread is begun, and blocks are decoded when they are asked for;
    /// otherwise so many are decoded at once.
    explicit BlocksAhead(unsigned int threads)
        : queued(threads > 1 ? std::size_t{queuedPerThread} * threads : 0), threads(threads) {}

    /// Another section begins. Blocks follow each other in it as `next` says; should one not, no
    /// more are decoded ahead.
    void Begin(Advance next);

    /// Reads the block at the stream's position, as ReadCompressedBlock does without a limit.
    bool Read(ZVSmartFormat::CheckedInStream& in, ZVSmartFormat::DecodedBlock& block);

  private:
    void LookAhead(ZVSmartFormat::CheckedInStream& in);

    const std::size_t queued;
    Advance advance;
    std::deque<DecodingBlock> ahead;  ///< in the order in which they lie there
    bool isGoingOn = false;
    ZVSmartFormat::WorkerThreads threads;
};

}  // namespace ZVSmartZvg
