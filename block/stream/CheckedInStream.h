#pragma once

#include <vector>

#include "ZVSmartFormat/Stream.h"
#include "stream/Failures.h"

namespace ZVSmartFormat {

/// A caller's stream whose short and failed reads throw "seek over buffer size". Its size is
/// asked once.
class CheckedInStream final : public CZVFTInStream {
  public:
    explicit CheckedInStream(CZVFTInStream& stream) : inner(stream), size(stream.GetSize()) {}

    bool Read(void* buffer, u64* byteCount) override {
        u64 delivered = *byteCount;
        if (!inner.Read(buffer, &delivered) || delivered != *byteCount) ThrowOutOfData();
        return true;
    }
    u64 GetPos() override { return inner.GetPos(); }
    int Seek(u64 pos) override {
        if (pos > size) ThrowOutOfData();
        return inner.Seek(pos);
    }
    u64 GetSize() override { return size; }

    u64 BytesLeft() {
        const u64 pos = inner.GetPos();
        return pos < size ? size - pos : 0;
    }

    /// The next `byteCount` bytes, valid until the next call.
    const u8* Take(u64 byteCount) {
        if (byteCount > taken.size()) {
            if (byteCount > BytesLeft()) ThrowOutOfData();
            taken = std::vector<u8>(static_cast<std::size_t>(byteCount));
        }
        Read(taken.data(), &byteCount);
        return taken.data();
    }

  private:
    CZVFTInStream& inner;
    u64 size;
    std::vector<u8> taken;
};

}  // namespace ZVSmartFormat
