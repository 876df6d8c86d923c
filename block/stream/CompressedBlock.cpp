#include "stream/CompressedBlock.h"

#include <limits>
#include <utility>

#include "ZVSmartLzma/LzmaTool.h"
#include "ZVSmartSerial/Serial.h"
#include "siblings/format/ByteCoder.h"
#include "stream/BoundedInStream.h"
#include "stream/Failures.h"
#include "stream/PositionGuard.h"

namespace ZVSmartFormat {

using ZVSmartLzma::CZVFTLzmaTool;

namespace {

constexpr u64 frameBytes = 4;

/// Reads blockSize; 0 where it is below 4 or the block does not end within the stream.
u64 ReadBlockSize(CZVFTInStream& in, u64 start) {
    const u64 streamSize = in.GetSize();
    if (start > streamSize || streamSize - start < frameBytes) return 0;
    const u64 blockSize = ZVSmartSerial::CZVFTSerialReader(&in).ReadU32();
    return blockSize < frameBytes || blockSize > streamSize - start ? 0 : blockSize;
}

}  // namespace

void WriteCompressedBlock(CZVFTOutStream& out, const void* data, u64 byteCount,
                          const ZVSmartLzma::CZVFTEncodeOpt* options) {
    // More than that no reader decodes.
    if (byteCount > std::numeric_limits<u32>::max()) ThrowNotWritten();
    ZVSmartSerial::CZVFTSerialWriter writer(&out);
    const u64 start = out.GetPos();
    writer.WriteU32(0);

    if (!ZVSmartLzma::EncodeBytes(data, byteCount, out, options)) ThrowNotWritten();

    const u64 end = out.GetPos();
    if (end - start > std::numeric_limits<u32>::max()) ThrowNotWritten();
    out.Seek(start);
    writer.WriteU32(static_cast<u32>(end - start));
    out.Seek(end);
}

bool ReadCompressedBlock(CZVFTInStream& in, u64 decodedLimit, DecodedBlock& block) {
    const u64 start = in.GetPos();
    const u64 blockSize = ReadBlockSize(in, start);
    if (blockSize != 0) {
        BoundedInStream encoded(in, blockSize - frameBytes);
        DecodedBlock decoded;
        if (ZVSmartLzma::DecodeBytes(encoded, decodedLimit, decoded.buffer)) {
            in.Seek(start + blockSize);
            block = std::move(decoded);
            return true;
        }
    }
    in.Seek(start);
    return false;
}

u32 DecodedSizeOfBlock(CZVFTInStream& in) {
    const PositionGuard guard(in);
    const u64 start = in.GetPos();
    const u64 blockSize = ReadBlockSize(in, start);
    if (blockSize == 0) return 0;
    BoundedInStream encoded(in, blockSize - frameBytes);
    unsigned int size = 0;
    return CZVFTLzmaTool::GetAfterDecodeDataSize(&encoded, size) ? size : 0;
}

BlockFrame ReadBlockFrame(CZVFTInStream& in) {
    const PositionGuard guard(in);
    BlockFrame frame;
    const u64 start = in.GetPos();
    frame.blockSize = ReadBlockSize(in, start);
    if (frame.blockSize == 0) return frame;
    BoundedInStream encoded(in, frame.blockSize - frameBytes);
    u64 encodedSize = 0;
    if (CZVFTLzmaTool::GetEncodedDataSize(&encoded, encodedSize)) frame.encodedSize = encodedSize;
    return frame;
}

}  // namespace ZVSmartFormat
