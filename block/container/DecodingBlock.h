#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "stream/CheckedInStream.h"
#include "stream/CompressedBlock.h"
#include "stream/WorkerThreads.h"

namespace ZVSmartZvg {

/// How many blocks a section has queued: for each thread one that is decoded and one that waits,
/// be it to be decoded or to be looked at; and none more once they take so many bytes.
/// @{
constexpr unsigned int queuedPerThread = 2;
constexpr ZVSmartFormat::u64 mostQueuedBytes = 64 << 20;
/// @}

/// A compressed block that a thread decodes from a copy of its bytes. One that is destroyed before
/// a thread has come to it is not decoded.
class DecodingBlock {
  public:
    using Use = std::function<void(const ZVSmartFormat::DecodedBlock& block)>;

    /// Queues the block at the stream's position and leaves the stream behind it. None, with the
    /// stream anywhere, where there seems to be no block, or one of more than `mostQueuedBytes`,
    /// encoded or decoded, or one that announces more than `decodedLimit` bytes, or where a program
    /// is built without threads. Where it decodes, the same thread then does `use`, if there is
    /// one; what that throws is lost. Throws what the stream throws, and std::system_error where
    /// the system gives no thread.
    static std::optional<DecodingBlock> Begin(ZVSmartFormat::CheckedInStream& in,
                                              ZVSmartFormat::WorkerThreads& threads,
                                              ZVSmartFormat::u64 decodedLimit, Use use = nullptr);

    /// Where it lies, and what lies behind it.
    /// @{
    ZVSmartFormat::u64 Position() const { return position; }
    ZVSmartFormat::u64 End() const { return end; }
    /// @}
    /// What it takes in memory, encoded and decoded.
    ZVSmartFormat::u64 Bytes() const;

    /// Waits for the decoded block, once. False, with `block` unchanged, where it does not decode.
    bool Take(ZVSmartFormat::DecodedBlock& block);

  private:
    struct Job;

    DecodingBlock() = default;

    ZVSmartFormat::u64 position = 0, end = 0;
    std::shared_ptr<Job> job;
};

}  // namespace ZVSmartZvg
