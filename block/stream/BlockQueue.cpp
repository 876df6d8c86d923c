#include "stream/BlockQueue.h"

#include <cstring>
#include <limits>
#include <system_error>
#include <utility>

#include "siblings/format/ByteCoder.h"
#include "stream/CompressedBlock.h"
#include "stream/Failures.h"

namespace ZVSmartFormat {

namespace {

OwnedBuffer CopyOf(const void* data, u64 byteCount) {
    OwnedBuffer copy;
    copy.data = static_cast<u8*>(std::malloc(static_cast<std::size_t>(byteCount)));
    if (copy.data == nullptr) ThrowNotAllocated();
    copy.capacity = byteCount;
    std::memcpy(copy.data, data, static_cast<std::size_t>(byteCount));
    return copy;
}

/// The block that WriteCompressedBlock writes, in a buffer of its size.
OwnedBuffer BlockOf(const OwnedBuffer& content, const ZVSmartLzma::CZVFTEncodeOpt& options) {
    OwnedBuffer block;
    CZVFTAllocBufferOutStream out(&block);
    WriteCompressedBlock(out, content.data, content.capacity, &options);
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
