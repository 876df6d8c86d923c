#pragma once

#include "ZVSmartFormat/MemoryStream.h"
#include "ZVSmartLzma/LzmaTool.h"

// The coder as the library itself calls it: from and to bytes that lie in memory, where
// CZVFTLzmaTool goes from stream to stream.

namespace ZVSmartLzma {

/// Compresses `byteCount` bytes at `data` and appends the .xz stream to `out`, as
/// CZVFTLzmaTool::Encode does, without a copy of the input.
bool EncodeBytes(const void* data, u64 byteCount, ZVSmartFormat::CZVFTOutStream& out,
                 const CZVFTEncodeOpt* opt);

/// What EncodeBytes chooses at this moment where it is given no options, for content of that size.
CZVFTEncodeOpt ChosenOptions(u64 byteCount);

/// Decompresses the stream at `in`'s position, as CZVFTLzmaTool::Decode does, into `decoded`, which
/// is empty before and has exactly the decoded bytes afterwards. The caller frees them, also where
/// the result is false.
bool DecodeBytes(ZVSmartFormat::CZVFTInStream& in, u64 decodedLimit,
                 ZVSmartFormat::AllocBuffer& decoded);

}  // namespace ZVSmartLzma
