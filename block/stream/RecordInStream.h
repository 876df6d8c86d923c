#pragma once

#include <cstring>

#include "ZVSmartFormat/MemoryStream.h"
#include "stream/Failures.h"

namespace ZVSmartFormat {

/// Bytes of a record in memory. Unlike its base it throws "seek over buffer size" where bytes
/// run out, so that nothing is read past the end unseen.
class RecordInStream final : public CZVFTReadBufferInStream {
  public:
    using CZVFTReadBufferInStream::CZVFTReadBufferInStream;

    /// The next `byteCount` bytes, in place; valid as long as the memory behind the stream.
    const u8* Take(u64 byteCount) {
        if (byteCount > size - pos) ThrowOutOfData();
        const u8* const bytes = data + pos;
        pos += byteCount;
        return bytes;
    }

    u64 BytesLeft() const { return size - pos; }

    bool Read(void* buffer, u64* byteCount) override {
        const u8* const bytes = Take(*byteCount);
        if (*byteCount != 0) std::memcpy(buffer, bytes, *byteCount);
        return true;
    }
};

}  // namespace ZVSmartFormat
