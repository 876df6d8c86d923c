#pragma once

#include "ZVSmartFormat/Stream.h"
#include "stream/Failures.h"

namespace ZVSmartFormat {

/// A caller's stream whose short writes and missed seeks throw "encode error".
class CheckedOutStream final : public CZVFTOutStream {
  public:
    explicit CheckedOutStream(CZVFTOutStream& stream) : inner(stream) {}

    u64 Write(const void* buffer, u64 size) override {
        if (size != 0 && inner.Write(buffer, size) != size) ThrowNotWritten();
        return size;
    }
    u64 GetPos() override { return inner.GetPos(); }
    int Seek(u64 pos) override {
        const int result = inner.Seek(pos);
        if (inner.GetPos() != pos) ThrowNotWritten();
        return result;
    }
    bool Reserve(u64 size) override { return inner.Reserve(size); }

  private:
    CZVFTOutStream& inner;
};

}  // namespace ZVSmartFormat
