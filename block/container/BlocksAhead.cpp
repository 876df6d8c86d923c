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
    isGoingOn = threads > 1;
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

/// Begins to decode what the threads have room for. The stream stands where a block is asked for.
void BlocksAhead::LookAhead(CheckedInStream& in) {
    const ZVSmartFormat::PositionGuard guard(in);
    try {
        if (!ahead.empty()) in.Seek(ahead.back().End());
        while (ahead.size() < threads) {
            if (!ahead.empty()) advance(in);
            std::optional<DecodingBlock> next = DecodingBlock::Begin(in, anySize);
            isGoingOn = next.has_value();
            if (!isGoingOn) return;
            ahead.push_back(std::move(*next));
        }
    } catch (const std::exception&) {
        isGoingOn = false;  // who asks for the block is told what is wrong with it
    }
}

}  // namespace ZVSmartZvg
