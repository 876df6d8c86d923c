#pragma once

#include "ZVSmartFormat/Stream.h"

/// The coder of compressed blocks.
namespace ZVSmartLzma {

using ZVSmartFormat::u32;
using ZVSmartFormat::u64;

/// How to compress. The default record means the coder's defaults.
struct CZVFTEncodeOpt {
    /// 0 to 9, as the presets of xz; anything above 9 takes the default (6, or 2 in fast mode).
    /// Where most of the input is UTF-16, as in a floor's components, what repeats is looked for
    /// in another way, which suits it better; any decoder reads that as well.
    u32 level = 0xFFFFFFFF;
    /// Dictionary in bytes, 4 KiB to 64 MiB (clamped); 0 takes the default: the input's size,
    /// between 4 KiB and 4 MiB (2 MiB in fast mode).
    u32 dictionarySize = 0;
};

/// Compresses to and from one plain .xz stream with one block and CRC64. The block's header
/// carries both sizes, so the decoded size and the stream's length are known before decoding.
/// Empty input is a stream of 32 bytes without a block.
///
/// Encoding and decoding may run in several threads at once, on different streams. All
/// throw CZVFTStreamException "bad malloc memory" where they run out of memory.
class ZVFT_API CZVFTLzmaTool {
  public:
    /// Compresses everything between `in`'s position and its end and appends it to `out`.
    /// `opt` may be null. False where reading, compressing or writing fails; `out` may then hold
    /// a part. Memory: a copy of the input, as much for its compressed form, and about 11 times
    /// the dictionary.
    static bool Encode(ZVSmartFormat::CZVFTInStream* in, ZVSmartFormat::CZVFTOutStream* out,
                       const CZVFTEncodeOpt* opt);

    /// Decompresses the one stream at `in`'s position into `out`, reading exactly its bytes.
    /// True only when it ended where its header said, with its checksum right and the announced
    /// size met. Untrusted bytes are safe: refused are streams of unknown size, of more than
    /// `decodedLimit` bytes, of more than 16384 × the compressed size + 64 KiB, and dictionaries
    /// that need more than 80 MiB. On false `out` may hold a part and `in` may have moved.
    static bool Decode(ZVSmartFormat::CZVFTInStream* in, ZVSmartFormat::CZVFTOutStream* out,
                       u64 decodedLimit = 0xFFFFFFFF);

    /// The decoded size of the stream at `in`'s position, from its headers alone. False, with
    /// `size` unchanged, where `Decode` would refuse the headers. `in` has moved afterwards.
    static bool GetAfterDecodeDataSize(ZVSmartFormat::CZVFTInStream* in, unsigned int& size);

    /// The length in bytes of the stream at `in`'s position, from its headers alone. False, with
    /// `size` unchanged, where `Decode` would refuse the headers. `in` has moved afterwards.
    static bool GetEncodedDataSize(ZVSmartFormat::CZVFTInStream* in, u64& size);

    /// Chooses a faster, weaker encoding (about five times as fast, an eighth larger) for every
    /// later `Encode` in the process; safe at any time from any thread.
    static void SetEocodeFastMod(bool fast);
};

}  // namespace ZVSmartLzma
