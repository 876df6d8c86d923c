#pragma once

#include <algorithm>

#include "ZVSmartFormat/Stream.h"

namespace ZVSmartFormat {

/// A stream that ends where the file or the block in it does: what follows is as if it were not
/// there. Positions are those of the stream behind it.
class BoundedInStream final : public CZVFTInStream {
  public:
    /// Ends `byteCount` bytes behind `stream`'s position, or where the stream ends.
    BoundedInStream(CZVFTInStream& stream, u64 byteCount) : inner(stream), size(stream.GetSize()) {
        const u64 start = stream.GetPos();
        if (start <= size && byteCount < size - start) size = start + byteCount;
    }

    bool Read(void* buffer, u64* byteCount) override {
        const u64 pos = inner.GetPos();
        return pos <= size && *byteCount <= size - pos && inner.Read(buffer, byteCount);
    }
    u64 GetPos() override { return inner.GetPos(); }
    int Seek(u64 newPos) override { return inner.Seek(newPos); }
    u64 GetSize() override { return size; }

  private:
    CZVFTInStream& inner;
    u64 size;
};

}  // namespace ZVSmartFormat
