#pragma once

#include "ZVSmartFormat/Stream.h"

namespace ZVSmartFormat {

/// Reads from bytes that the caller keeps alive; never copies or frees them.
class ZVFT_API CZVFTReadBufferInStream : public CZVFTInStream {
  public:
    /// Reads `size` bytes at `data`, from position 0. `data` may be null where `size` is 0.
    CZVFTReadBufferInStream(const void* data, u64 size);

    /// All or nothing: false, with nothing copied and `*size` unchanged, where fewer than
    /// `*size` bytes are left.
    bool Read(void* buffer, u64* size) override;
    u64 GetPos() override;

    /// Returns 0. Throws CZVFTStreamException "seek over buffer size" for a position behind the
    /// end; the end itself is a valid position. The position stays where it was on a throw.
    int Seek(u64 pos) override;
    u64 GetSize() override;

  protected:
    const u8* data;  ///< the caller's bytes
    u64 size;        ///< how many of them
    u64 pos = 0;     ///< the next to be read; never above `size`
};

/// A growing heap buffer. Whoever makes it owns `data` and frees it with `free`.
struct AllocBuffer {
    u8* data = nullptr;  ///< from `malloc` or `realloc`; null while empty
    u64 capacity = 0;    ///< bytes allocated
};

/// Writes into a growing AllocBuffer, which it borrows. The bytes produced are those before
/// `GetPos()` after the last write.
class ZVFT_API CZVFTAllocBufferOutStream : public CZVFTOutStream {
  public:
    /// Writes into `*buffer` from its first byte; whatever it held is overwritten.
    explicit CZVFTAllocBufferOutStream(AllocBuffer* buffer);

    /// Returns `size`. Where the bytes do not fit, the buffer grows by a third of its capacity,
    /// or by `size` + 256 where that is not enough. Throws CZVFTStreamException
    /// "bad relloc memory" where it cannot grow; buffer and position stay as they were.
    u64 Write(const void* buffer, u64 size) override;
    /// The next `size` bytes, for the caller to fill: as `Write`, without something to copy.
    /// Valid until the buffer grows.
    u8* Extend(u64 size);
    u64 GetPos() override;

    /// Returns 0. Throws CZVFTStreamException "seek over buffer size" for a position behind the
    /// allocated capacity.
    int Seek(u64 pos) override;

    /// Allocates exactly `size` bytes where the capacity is less. Returns true. Throws
    /// CZVFTStreamException "bad malloc memory" where that fails; the buffer stays as it was.
    bool Reserve(u64 size) override;

  private:
    AllocBuffer* target;
    u64 pos = 0;
};

}  // namespace ZVSmartFormat
