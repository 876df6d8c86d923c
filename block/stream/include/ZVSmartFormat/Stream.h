#pragma once

#include <cstdint>

#include "ZVSmartFormat/Api.h"

/// Streams of bytes, the exception that they throw, and the ini reader.
namespace ZVSmartFormat {

/// Unsigned integers of 8, 16, 32 and 64 bits.
/// @{
using u8 = std::uint8_t;
using u16 = std::uint16_t;
using u32 = std::uint32_t;
using u64 = std::uint64_t;
/// @}

/// A source of bytes with a position. Hosts implement it for their own storage.
///
/// A stream serves one thread at a time. Positions and sizes are bytes from the stream's start.
class ZVFT_API CZVFTInStream {
  public:
    CZVFTInStream(const CZVFTInStream&) = delete;
    CZVFTInStream& operator=(const CZVFTInStream&) = delete;

    /// Reads up to `*size` bytes at the position into `buffer` and advances.
    /// On return `*size` is the count delivered, where the stream reports one.
    /// False: nothing usable was read. A short count with true is the end of the data.
    virtual bool Read(void* buffer, u64* size) = 0;

    /// The position.
    virtual u64 GetPos() = 0;

    /// Moves to the absolute position `pos`. The library does not look at the result; its own
    /// streams return 0. A stream may throw where it cannot go there.
    virtual int Seek(u64 pos) = 0;

    /// The size of the whole input.
    virtual u64 GetSize() = 0;

    virtual ~CZVFTInStream();

  protected:
    CZVFTInStream() = default;
};

/// A sink of bytes with a position. Hosts implement it for their own storage.
///
/// The library seeks back to mend sizes and offsets that it wrote as placeholders, so a write
/// inside what is already there must replace it.
class ZVFT_API CZVFTOutStream {
  public:
    CZVFTOutStream(const CZVFTOutStream&) = delete;
    CZVFTOutStream& operator=(const CZVFTOutStream&) = delete;

    /// Writes `size` bytes at the position and advances. Returns the count written; anything
    /// less than `size` is a failure.
    virtual u64 Write(const void* buffer, u64 size) = 0;

    /// The position; all bits set where the stream has none or has lost it, which the library
    /// takes for a failure.
    virtual u64 GetPos() = 0;

    /// Moves to the absolute position `pos`. The library does not look at the result but asks
    /// `GetPos()` whether the stream arrived.
    virtual int Seek(u64 pos) = 0;

    /// Makes room for at least `size` bytes in all; a hint for streams that have no use for it.
    virtual bool Reserve(u64 size) = 0;

    virtual ~CZVFTOutStream();

  protected:
    CZVFTOutStream() = default;
};

}  // namespace ZVSmartFormat
