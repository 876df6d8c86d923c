#include "container/DecodingBlock.h"

#include <algorithm>
#include <chrono>
#include <utility>
#include <vector>

#include "ZVSmartFormat/MemoryStream.h"

namespace ZVSmartZvg {

using ZVSmartFormat::CheckedInStream;
using ZVSmartFormat::CZVFTReadBufferInStream;
using ZVSmartFormat::DecodedBlock;
using ZVSmartFormat::u64;
using ZVSmartFormat::u8;

std::optional<DecodingBlock> DecodingBlock::Begin(CheckedInStream& in, u64 decodedLimit, Use use) {
    if constexpr (!ZVSmartFormat::hasThreads) return std::nullopt;
    constexpr u64 largest = 64 << 20;
    const u64 position = in.GetPos();
    const u64 size = ZVSmartFormat::ReadBlockFrame(in).blockSize;
    const u64 decodedSize = ZVSmartFormat::DecodedSizeOfBlock(in);
    const u64 most = std::min(largest, decodedLimit);
    if (size > largest || decodedSize == 0 || decodedSize > most) return std::nullopt;
    std::vector<u8> bytes(static_cast<std::size_t>(size));
    u64 byteCount = size;
    in.Read(bytes.data(), &byteCount);
    auto decode = [bytes = std::move(bytes), decodedSize, use = std::move(use)] {
        CZVFTReadBufferInStream encoded(bytes.data(), bytes.size());
        Decoded whole;
        whole.isWhole = ReadCompressedBlock(encoded, decodedSize, whole.block);
        if (whole.isWhole && use) {
            try {
                use(whole.block);
            } catch (...) {
                return whole;
            }
        }
        return whole;
    };
    return DecodingBlock(position, position + size,
                         std::async(std::launch::async, std::move(decode)));
}

bool DecodingBlock::IsDone() const {
    return decoded.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

bool DecodingBlock::Take(DecodedBlock& block) {
    Decoded whole = decoded.get();
    if (!whole.isWhole) return false;
    block = std::move(whole.block);
    return true;
}

}  // namespace ZVSmartZvg
