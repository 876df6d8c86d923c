#pragma once

#include "ZVSmartFormat/Stream.h"

namespace ZVSmartFormat {

/// Puts a stream back where it was, on every way out.
class PositionGuard {
  public:
    explicit PositionGuard(CZVFTInStream& stream) : stream(stream), pos(stream.GetPos()) {}
    ~PositionGuard() {
        try {
            stream.Seek(pos);
        } catch (...) {  // the exception under way, if any, says what happened
        }
    }
    PositionGuard(const PositionGuard&) = delete;
    PositionGuard& operator=(const PositionGuard&) = delete;

  private:
    CZVFTInStream& stream;
    u64 pos;
};

}  // namespace ZVSmartFormat
