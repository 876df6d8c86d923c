#pragma once

#include "ZVSmartFormat/Stream.h"
#include "ZVSmartZvg/BlockHeadInfo.h"

// The head of a file, at its base:
//   0   9 bytes  "zvgblock" and a zero byte
//   9   u32      version
//   13  text     firstText
//       text     secondText
//       u8       flags
//       u32      optionalValue                     flags 0x40
//       text     optionalText                      flags 0x80
//       u32      serial version of the transform   flags 0x20
//       12 f64   transf                            flags 0x20
//       u32      floorSectionOffset, from the base

namespace ZVSmartZvg {

/// What a file begins with.
struct FileHead {
    unsigned int version = 0;
    SZVLGZvgBlockHeadInfo info;
};

constexpr unsigned int newestVersion = 4;

/// Writes the head up to `floorSectionOffset`, which the caller writes.
void WriteFileHead(ZVSmartFormat::CZVFTOutStream& out, const FileHead& head);

/// Reads the head up to `floorSectionOffset`. Throws "it's not zvg file format" or
/// "it's upper zvg format" before anything else is read; "seek over buffer size", with `head`
/// unchanged, where it is cut short.
void ReadFileHead(ZVSmartFormat::CZVFTInStream& in, FileHead& head);

}  // namespace ZVSmartZvg
