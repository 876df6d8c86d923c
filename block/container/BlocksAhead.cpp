#include "container/BlocksAhead.h"

#include <exception>
#include <limits>
#include <utility>

#include "stream/PositionGuard.h"

namespace ZVSmartZvg {

using ZVSmartFormat::CheckedInStream;
using ZVSmartFormat::DecodedBlock;
using ZVSmartFormat::u64;

namespace {

constexpr u64 anySize = std::numeric_limits<ZVSmartFormat::u32>::max();

}  // namespace

void BlocksAhead::Begin(Advance next) {
    advance = std::move(next);
    ahead.clear();
    isGoingOn = queued != 0;
}

bool BlocksAhead::Read(CheckedInStream& in, DecodedBlock& block) {
    if (isGoingOn) LookAhead(in);
    if (ahead.empty() || ahead.front().Position() != in.GetPos()) {
        isGoingOn = false;
        ahead.clear();
        return ReadCompressedBlock(in, anySize, block);
    }
    DecodingBlock first = std::move(ahead.front());
    ahead.pop_front();
    if (!first.Take(block)) return false;
    in.Seek(first.End());
    return true;
}

/// Queues as many blocks as there may be. The stream stands where a block is asked for.
void BlocksAhead::LookAhead(CheckedInStream& in) {
    const ZVSmartFormat::PositionGuard guard(in);
    try {
        if (!ahead.empty()) in.Seek(ahead.back().End());
        u64 bytes = 0;
        for (const DecodingBlock& block : ahead) bytes += block.Bytes();
        while (ahead.size() < queued && bytes < mostQueuedBytes) {
            if (!ahead.empty()) advance(in);
            std::optional<DecodingBlock> next = DecodingBlock::Begin(in, threads, anySize);
            isGoingOn = next.has_value();
            if (!isGoingOn) return;
            bytes += next->Bytes();
            ahead.push_back(std::move(*next));
        }
    } catch (const std::exception&) {
        isGoingOn = false;  // who asks for the block is told what is wrong with it
    }
}

}  // namespace ZVSmartZvg
