#include "stream/BlockQueue.h"

#include <limits>
#include <system_error>
#include <utility>

#include "siblings/format/ByteCoder.h"
#include "stream/CompressedBlock.h"

namespace ZVSmartFormat {

namespace {

std::vector<u8> CopyOf(const void* data, u64 byteCount) {
    const u8* const bytes = static_cast<const u8*>(data);
    return {bytes, bytes + byteCount};
}

/// The block that WriteCompressedBlock writes, in a buffer of its size.
OwnedBuffer BlockOf(const std::vector<u8>& content, const ZVSmartLzma::CZVFTEncodeOpt& options) {
    OwnedBuffer block;
    CZVFTAllocBufferOutStream out(&block);
    WriteCompressedBlock(out, content.data(), content.size(), &options);
    block.capacity = out.GetPos();
    return block;
}

}  // namespace

void BlockQueue::Write(const void* data, u64 byteCount) {
    if (threads <= 1 || byteCount == 0 || byteCount > std::numeric_limits<u32>::max()) {
        Finish();
        WriteCompressedBlock(out, data, byteCount);
        return;
    }
    while (pending.size() >= threads) WriteOldest();
    // What the process chooses meanwhile is for later blocks.
    auto compress = [options = ZVSmartLzma::ChosenOptions(byteCount),
                     content = CopyOf(data, byteCount)] { return BlockOf(content, options); };
    Pending& newest = pending.emplace_back();
    try {
        newest.block = std::async(std::launch::async, std::move(compress));
    } catch (const std::system_error&) {
        // The system gives no more threads.
        pending.pop_back();
        Finish();
        WriteCompressedBlock(out, data, byteCount);
    }
}

void BlockQueue::Do(std::function<void()> action) {
    if (pending.empty()) {
        action();
    } else {
        pending.back().actions.push_back(std::move(action));
    }
}

void BlockQueue::Finish() {
    while (!pending.empty()) WriteOldest();
}

void BlockQueue::WriteOldest() {
    Pending oldest = std::move(pending.front());
    pending.pop_front();
    const OwnedBuffer block = oldest.block.get();
    out.Write(block.data, block.capacity);
    for (const auto& action : oldest.actions) action();
}

}  // namespace ZVSmartFormat
