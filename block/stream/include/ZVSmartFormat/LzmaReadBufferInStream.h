#pragma once

#include "ZVSmartFormat/MemoryStream.h"

namespace ZVSmartFormat {

/// Reads a buffer that is about to be compressed or was just decoded. Unlike its base it
/// shortens a read at the end of the data instead of refusing it.
class ZVFT_API CZVFTLzmaReadBufferInStream : public CZVFTReadBufferInStream {
  public:
    /// Empty until `SetBuffer`.
    CZVFTLzmaReadBufferInStream();
    ~CZVFTLzmaReadBufferInStream() override;

    /// Reads `size` bytes at `data` from now on, from position 0. Fewer than 65,736 bytes are
    /// copied into memory of 65,736 bytes that the stream owns and uses again; more are read in
    /// place and must stay alive. Throws CZVFTStreamException "bad malloc memory" where the copy
    /// cannot be allocated; the stream stays as it was.
    void SetBuffer(const void* data, u64 size);

    /// Reads `*size` bytes, or as many as are left; `*size` becomes that count. Always true.
    bool Read(void* buffer, u64* size) override;
    /// The bytes from the position on, in place: `GetSize()` − `GetPos()` of them.
    const u8* Rest() const { return data + pos; }
    /// The number of valid bytes, which may be less than the memory behind them.
    u64 GetSize() override;

  private:
    u8* ownCopy = nullptr;
    u64 dataSize = 0;
};

}  // namespace ZVSmartFormat
