#pragma once

#include <deque>
#include <functional>
#include <future>
#include <vector>

#include "stream/OwnedBuffer.h"

namespace ZVSmartFormat {

/// Writes compressed blocks, and whatever is to stand between them, in the order in which it is
/// told; several threads compress, this one writes. The stream gets the same bytes from any number
/// of threads, and from one thread everything before a call returns.
class BlockQueue {
  public:
    /// `out` is borrowed and throws what it cannot write. With `threads` of 0 or 1 no thread is
    /// begun; otherwise that many blocks are compressed at once, each of which takes its content,
    /// its compressed form and the coder's own memory.
    BlockQueue(CZVFTOutStream& out, unsigned int threads) : out(out), threads(threads) {}

    /// Compresses a copy of `byteCount` bytes at `data` into a block, which is written behind all
    /// that came before. Throws as WriteCompressedBlock does, for this block or for one before; the
    /// queue is of no use then.
    void Write(const void* data, u64 byteCount);

    /// Calls `action`, which may write to the stream, once all that came before is written. What
    /// it throws comes out of the call that it is made from.
    void Do(std::function<void()> action);

    /// Waits until all is written.
    void Finish();

  private:
    /// A block that is being compressed, and what is to be done behind it.
    struct Pending {
        std::future<OwnedBuffer> block;
        std::vector<std::function<void()>> actions;
    };

    void WriteOldest();

    CZVFTOutStream& out;
    unsigned int threads;
    std::deque<Pending> pending;
};

}  // namespace ZVSmartFormat
