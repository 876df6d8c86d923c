#include "container/BlocksAhead.h"

#include <exception>
#include <limits>
#include <utility>
#include <vector>

#include "ZVSmartFormat/MemoryStream.h"
#include "stream/PositionGuard.h"

namespace ZVSmartZvg {

using ZVSmartFormat::CheckedInStream;
using ZVSmartFormat::CZVFTReadBufferInStream;
using ZVSmartFormat::DecodedBlock;
using ZVSmartFormat::u64;
using ZVSmartFormat::u8;

namespace {

constexpr u64 anySize = std::numeric_limits<ZVSmartFormat::u32>::max();
constexpr u64 largestAhead = 64 << 20;  // bytes, encoded or decoded

}  // namespace

void BlocksAhead::Begin(Advance next) {
    advance = std::move(next);
    ahead.clear();
    isGoingOn = threads > 1;
}

bool BlocksAhead::Read(CheckedInStream& in, DecodedBlock& block) {
    if (isGoingOn) LookAhead(in);
    if (ahead.empty() || ahead.front().position != in.GetPos()) {
        isGoingOn = false;
        ahead.clear();
        return ReadCompressedBlock(in, anySize, block);
    }
    Ahead first = std::move(ahead.front());
    ahead.pop_front();
    Decoded decoded = first.block.get();
    if (!decoded.isWhole) return false;
    block = std::move(decoded.block);
    in.Seek(first.end);
    return true;
}

/// Begins to decode what the threads have room for. The stream stands where a block is asked for.
void BlocksAhead::LookAhead(CheckedInStream& in) {
    const ZVSmartFormat::PositionGuard guard(in);
    try {
        if (!ahead.empty()) in.Seek(ahead.back().end);
        while (ahead.size() < threads) {
            if (!ahead.empty()) advance(in);
            if (DecodeAhead(in)) continue;
            isGoingOn = false;
            return;
        }
    } catch (const std::exception&) {
        isGoingOn = false;  // who asks for the block is told what is wrong with it
    }
}

/// Begins to decode the block at the stream's position and moves the stream behind it. False where
/// there seems to be none, or a large one.
bool BlocksAhead::DecodeAhead(CheckedInStream& in) {
    const u64 position = in.GetPos();
    const u64 size = ZVSmartFormat::ReadBlockFrame(in).blockSize;
    const u64 decodedSize = ZVSmartFormat::DecodedSizeOfBlock(in);
    if (size > largestAhead || decodedSize == 0 || decodedSize > largestAhead) return false;
    std::vector<u8> bytes(static_cast<std::size_t>(size));
    u64 byteCount = size;
    in.Read(bytes.data(), &byteCount);
    auto decode = [bytes = std::move(bytes)] {
        CZVFTReadBufferInStream encoded(bytes.data(), bytes.size());
        Decoded decoded;
        decoded.isWhole = ReadCompressedBlock(encoded, anySize, decoded.block);
        return decoded;
    };
    ahead.push_back({position, position + size, std::async(std::launch::async, std::move(decode))});
    return true;
}

}  // namespace ZVSmartZvg
