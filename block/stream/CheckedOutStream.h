#pragma once

#include <limits>

#include "ZVSmartFormat/Stream.h"
#include "stream/Failures.h"

namespace ZVSmartFormat {

/// A caller's stream whose short writes, missed seeks and lost positions throw "encode error".
class CheckedOutStream final : public CZVFTOutStream {
  public:
    explicit CheckedOutStream(CZVFTOutStream& stream) : inner(stream) {}

    u64 Write(const void* buffer, u64 size) override {
        if (size != 0 && inner.Write(buffer, size) != size) ThrowNotWritten();
        return size;
    }
    u64 GetPos() override {
        const u64 pos = inner.GetPos();
        if (pos == noPosition) ThrowNotWritten();
        return pos;
    }
    int Seek(u64 pos) override {
        const int result = inner.Seek(pos);
        if (GetPos() != pos) ThrowNotWritten();
        return result;
    }
    bool Reserve(u64 size) override { return inner.Reserve(size); }

  private:
    /// What a pipe tells, and a file after a flush that failed.
    static constexpr u64 noPosition = std::numeric_limits<u64>::max();

    CZVFTOutStream& inner;
};

}  // namespace ZVSmartFormat
