#pragma once

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

#include "ZVSmartFormat/Stream.h"

namespace ZVSmartModel::Web {

/// Bytes of a file, by position.
struct ByteRange {
    std::uint64_t position = 0, size = 0;
};

/// A file of which some blocks are there. A read of others fails, and is remembered as what was
/// missed, so that whoever asked can be told to bring it and to ask again.
class RangeStream : public ZVSmartFormat::CZVFTInStream {
  public:
    /// What is brought begins at a multiple of this many bytes.
    static constexpr std::uint64_t blockBytes = 64 << 10;

    /// A file of `size` bytes, of which none is there.
    explicit RangeStream(std::uint64_t size) : size(size) {}

    /// Takes the bytes at `position`; a last block that is neither whole nor the file's end is
    /// passed over. False where `position` is not a block's.
    bool Add(std::uint64_t position, const std::uint8_t* bytes, std::uint64_t byteCount);

    /// The first read that failed since the last `ForgetMiss`: from the first byte that is not
    /// there to the end of what was asked for.
    const std::optional<ByteRange>& Miss() const { return miss; }
    void ForgetMiss() { miss.reset(); }

    /// Forgets blocks down to `most` bytes: those that were read least lately. What was brought
    /// ahead and is yet to be read outlasts them in up to three quarters of that space, as a walk
    /// reads other parts of the file until it gets there.
    void Trim(std::uint64_t most);

    /// False where not all that the file has of it is there.
    bool Read(void* buffer, ZVSmartFormat::u64* byteCount) override;
    ZVSmartFormat::u64 GetPos() override { return pos; }
    int Seek(ZVSmartFormat::u64 newPos) override;
    ZVSmartFormat::u64 GetSize() override { return size; }

  private:
    struct Block {
        std::vector<std::uint8_t> bytes;
        std::uint64_t lastUse = 0;
        bool wasRead = false;
    };

    std::uint64_t size;
    std::uint64_t pos = 0;
    std::uint64_t uses = 0;
    std::optional<ByteRange> miss;
    std::unordered_map<std::uint64_t, Block> blocks;  ///< by number
};

}  // namespace ZVSmartModel::Web
