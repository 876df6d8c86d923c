#pragma once

#include "ZVSmartLzma/LzmaTool.h"
#include "stream/OwnedBuffer.h"

// A compressed block in a stream:
//   u32 blockSize   counts its own 4 bytes
//   the coder's output, one .xz stream
// The byte behind the block lies at the position of blockSize + blockSize.

namespace ZVSmartFormat {

/// How many threads may compress or decompress blocks of one file.
constexpr unsigned int mostCoders = 64;

#if defined(__EMSCRIPTEN__) && !defined(__EMSCRIPTEN_PTHREADS__)
constexpr bool hasThreads = false;  // and the code for them need not be sent
#else
constexpr bool hasThreads = true;
#endif

/// The decoded bytes of one block.
class DecodedBlock {
  public:
    const u8* Data() const { return buffer.data; }
    u64 Size() const { return buffer.capacity; }

  private:
    friend bool ReadCompressedBlock(CZVFTInStream& in, u64 decodedLimit, DecodedBlock& block);

    OwnedBuffer buffer;
};

/// Compresses `byteCount` bytes at `data` into a block at `out`'s position. Throws
/// "encode error" where that fails and where 32 bits cannot count the bytes. Without options the
/// coder chooses.
void WriteCompressedBlock(CZVFTOutStream& out, const void* data, u64 byteCount,
                          const ZVSmartLzma::CZVFTEncodeOpt* options = nullptr);

/// Decodes the block at `in`'s position and moves `in` behind it. False, with `block` and the
/// position unchanged, where it does not decode or announces more than `decodedLimit` bytes.
bool ReadCompressedBlock(CZVFTInStream& in, u64 decodedLimit, DecodedBlock& block);

/// The decoded size of the block at `in`'s position, from its headers; 0 where it cannot be
/// told. The position stays.
u32 DecodedSizeOfBlock(CZVFTInStream& in);

/// What the frame of the block at `in`'s position says; the position stays.
struct BlockFrame {
    u64 blockSize = 0;    ///< 0 where there is no whole block
    u64 encodedSize = 0;  ///< the bytes that the coder's output takes; 0 where it cannot be told
};
BlockFrame ReadBlockFrame(CZVFTInStream& in);

}  // namespace ZVSmartFormat
