#pragma once

#include <functional>
#include <future>
#include <optional>

#include "stream/CheckedInStream.h"
#include "stream/CompressedBlock.h"

namespace ZVSmartZvg {

/// A compressed block that a thread of its own decodes from a copy of its bytes. Destroying one
/// waits for that thread.
class DecodingBlock {
  public:
    using Use = std::function<void(const ZVSmartFormat::DecodedBlock& block)>;

    /// Begins with the block at the stream's position and leaves the stream behind it. None, with
    /// the stream anywhere, where there seems to be no block, or one of more than 64 MiB, encoded
    /// or decoded, or one that announces more than `decodedLimit` bytes, or where a program is
    /// built without threads. Where it decodes, the same thread then does `use`, if there is one;
    /// what that throws is lost. Throws what the stream throws, and std::system_error where the
    /// system gives no thread.
    static std::optional<DecodingBlock> Begin(ZVSmartFormat::CheckedInStream& in,
                                              ZVSmartFormat::u64 decodedLimit, Use use = nullptr);

    /// Where it lies, and what lies behind it.
    /// @{
    ZVSmartFormat::u64 Position() const { return position; }
    ZVSmartFormat::u64 End() const { return end; }
    /// @}

    bool IsDone() const;
    /// Waits for the decoded block, once. False, with `block` unchanged, where it does not decode.
    bool Take(ZVSmartFormat::DecodedBlock& block);

  private:
    struct Decoded {
        ZVSmartFormat::DecodedBlock block;
        bool isWhole = false;
    };

    DecodingBlock(ZVSmartFormat::u64 position, ZVSmartFormat::u64 end, std::future<Decoded> decoded)
        : position(position), end(end), decoded(std::move(decoded)) {}

    ZVSmartFormat::u64 position, end;
    std::future<Decoded> decoded;
};

}  // namespace ZVSmartZvg
