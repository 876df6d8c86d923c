#pragma once

#include "ZVSmartFormat/Stream.h"
#include "container/Crc64.h"
#include "stream/CheckedInStream.h"

// The seal, which a writer may put behind the end of a file:
//   0   8 bytes  "zvgseal" and a zero byte
//   8   u64      length: the bytes from the file's base to the seal
//   16  u64      CRC-64, the one of .xz, of these bytes
// Blocks have checksums of their own; the seal is for all that stands between them.

namespace ZVSmartZvg {

using ZVSmartFormat::u64;

constexpr u64 sealBytes = 24;

/// Passes a file on to a caller's stream and seals it. What is written over must have been zeros:
/// so placeholders are filled in without reading the file back.
class SealingOutStream final : public ZVSmartFormat::CZVFTOutStream {
  public:
    /// The file begins at `stream`'s position.
    explicit SealingOutStream(ZVSmartFormat::CZVFTOutStream& stream)
        : inner(stream), basePos(stream.GetPos()) {}

    u64 Write(const void* buffer, u64 size) override;
    u64 GetPos() override { return inner.GetPos(); }
    int Seek(u64 newPos) override;
    bool Reserve(u64 size) override { return inner.Reserve(size); }

    /// Writes the seal at the end of the file. Throws "encode error" where that fails.
    void WriteSeal();

  private:
    ZVSmartFormat::CZVFTOutStream& inner;
    u64 basePos;
    u64 pos = 0;  // from the base, as is the end
    u64 end = 0;
    Crc64 crc;
};

/// What is at the end of a file.
struct Seal {
    bool isThere = false;  ///< whether a seal's magic is; nothing else counts without
    u64 length = 0;
    u64 crc = 0;
};

/// Reads what would be the seal at `in`'s position, of which `sealBytes` are there.
Seal ReadSeal(ZVSmartFormat::CheckedInStream& in);

/// The CRC-64 of `byteCount` bytes at `in`'s position.
u64 CrcOf(ZVSmartFormat::CheckedInStream& in, u64 byteCount);

}  // namespace ZVSmartZvg
