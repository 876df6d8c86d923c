#include "container/DecodingBlock.h"

#include <algorithm>
#include <future>
#include <utility>
#include <vector>

#include "ZVSmartFormat/MemoryStream.h"

namespace ZVSmartZvg {

using ZVSmartFormat::CheckedInStream;
using ZVSmartFormat::CZVFTReadBufferInStream;
using ZVSmartFormat::DecodedBlock;
using ZVSmartFormat::u64;
using ZVSmartFormat::u8;
using ZVSmartFormat::WorkerThreads;

struct DecodingBlock::Job {
    std::vector<u8> bytes;  // encoded; until it is decoded
    u64 decodedSize = 0;
    Use use;
    DecodedBlock block;
    std::promise<bool> isWhole;

    void Do() noexcept;
};

void DecodingBlock::Job::Do() noexcept {
    try {
        CZVFTReadBufferInStream encoded(bytes.data(), bytes.size());
        const bool decodes = ReadCompressedBlock(encoded, decodedSize, block);
        bytes = {};
        try {
            if (decodes && use) use(block);
        } catch (...) {
            // The block is there all the same.
        }
        isWhole.set_value(decodes);
    } catch (...) {
        isWhole.set_exception(std::current_exception());
    }
}

std::optional<DecodingBlock> DecodingBlock::Begin(CheckedInStream& in, WorkerThreads& threads,
                                                  u64 decodedLimit, Use use) {
    if constexpr (!ZVSmartFormat::hasThreads) return std::nullopt;
    DecodingBlock begun;
    begun.position = in.GetPos();
    u64 size = ZVSmartFormat::ReadBlockFrame(in).blockSize;
    begun.end = begun.position + size;
    const u64 decodedSize = ZVSmartFormat::DecodedSizeOfBlock(in);
    const u64 most = std::min(mostQueuedBytes, decodedLimit);
    if (size > mostQueuedBytes || decodedSize == 0 || decodedSize > most) return std::nullopt;
    begun.job = std::make_shared<Job>();
    begun.job->bytes.resize(static_cast<std::size_t>(size));
    in.Read(begun.job->bytes.data(), &size);
    begun.job->decodedSize = decodedSize;
    begun.job->use = std::move(use);
    threads.Do([wanted = std::weak_ptr<Job>(begun.job)] {
        if (const std::shared_ptr<Job> job = wanted.lock()) job->Do();
    });
    return begun;
}

u64 DecodingBlock::Bytes() const {
    return end - position + job->decodedSize;
}

bool DecodingBlock::Take(DecodedBlock& block) {
    if (!job->isWhole.get_future().get()) return false;
    block = std::move(job->block);
    return true;
}

}  // namespace ZVSmartZvg
