#pragma once

#include <functional>
#include <unordered_map>
#include <vector>

#include "ZVSmartFormat/Stream.h"

namespace ZVSmartFormat {

/// Reads a source of which each request is dear, such as a file on a server, in few and large
/// requests, and keeps what was read lately. A request begins at a multiple of 4 KiB and is at
/// least 256 KiB long where so much is there and not kept, unless `Expect` says how much is wanted;
/// requests that follow each other grow.
/// It has no thread and no lock, so that a fork leaves both processes a whole stream each, as far
/// as the source stands it.
class ZVFT_API CZVFTCachedInStream : public CZVFTInStream {
  public:
    /// Reads `size` bytes at `position`, which are within the source, into `buffer`, and returns
    /// how many it delivered; anything less than `size` is a failure. What it throws passes
    /// through.
    using Source = std::function<u64(u64 position, void* buffer, u64 size)>;

    /// A stream of the first `size` bytes of `source`, which keeps `cacheBytes` of them, and 256
    /// KiB at least.
    CZVFTCachedInStream(Source source, u64 size, u64 cacheBytes = u64{4} << 20);
    ~CZVFTCachedInStream() override;

    /// At the end of the source `*size` becomes the count there was. False where the source
    /// failed; what was kept before is kept, and the next read asks it again.
    bool Read(void* buffer, u64* size) override;
    u64 GetPos() override;
    /// Any position may be taken; behind the end there is nothing to read.
    int Seek(u64 pos) override;
    u64 GetSize() override;

    /// Says that the `byteCount` bytes at `position` are about to be read: what is not kept of them
    /// is asked for at once, in one request, and no more unless it follows the last one. It is kept
    /// until the next request even where it is more than the cache holds, up to 16 MiB. Where it is
    /// more than that, or the source fails, it is left to `Read`.
    void Expect(u64 position, u64 byteCount);

    /// Whether all of the `byteCount` bytes at `position` is kept, so that reading them costs no
    /// request; false where the source ends before. Asks the source for nothing.
    bool Holds(u64 position, u64 byteCount) const;

  private:
    struct Block {
        std::vector<u8> bytes;
        u64 lastUse = 0;
    };

    Block* Find(u64 number);
    u64 RequestLength(u64 first, u64 wanted) const;
    bool Fetch(u64 first, u64 length);
    void DropOldest();

    Source source;
    u64 size;
    u64 mostBlocks;
    u64 pos = 0;
    u64 uses = 0;
    u64 requestEnd = 0;     ///< the block behind the last request
    u64 requestLength = 0;  ///< blocks of it
    std::unordered_map<u64, Block> blocks;
};

}  // namespace ZVSmartFormat
