#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "ZVSmartFormat/Stream.h"

namespace bench {

using Bytes = std::vector<ZVSmartFormat::u8>;
using View = std::span<const ZVSmartFormat::u8>;

/// How the coder is set: a preset, and the largest dictionary; the dictionary is no larger than
/// what is compressed.
struct CoderSettings {
    ZVSmartFormat::u32 preset = 6;
    ZVSmartFormat::u32 dictionaryCap = 4 << 20;
    bool asRecords = false;  ///< searched as the library does it in floors
};
constexpr CoderSettings defaultSettings{};
constexpr CoderSettings floorSettings{6, 4 << 20, true};
constexpr CoderSettings fastSettings{2, 2 << 20};

/// One liblzma call: `content` as an .xz stream with CRC64 in `out`, which has room. Returns the
/// bytes written; ends the program on failure, as do the others.
std::size_t EncodeInto(View content, const CoderSettings& settings, Bytes& out);
/// The room that `EncodeInto` needs for `byteCount` bytes.
std::size_t EncodedBound(std::size_t byteCount);
Bytes Encoded(View content, const CoderSettings& settings);

/// One liblzma call: decodes an .xz stream into `out`, which has room. Returns the bytes written.
std::size_t DecodeInto(View encoded, Bytes& out);
Bytes Decoded(View encoded, std::size_t decodedSize);
/// The decoded size of an .xz stream, from its own index.
std::size_t DecodedSize(View encoded);

}  // namespace bench
