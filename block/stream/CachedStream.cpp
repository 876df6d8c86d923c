#include "ZVSmartFormat/CachedStream.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace ZVSmartFormat {

namespace {

constexpr u64 blockBytes = 64 << 10;
constexpr u64 leastRequest = 4;    ///< blocks
constexpr u64 mostExpected = 256;  ///< blocks

u64 BlocksOf(u64 bytes) {
    return bytes / blockBytes + (bytes % blockBytes != 0 ? 1 : 0);
}

}  // namespace

CZVFTCachedInStream::CZVFTCachedInStream(Source source, u64 size, u64 cacheBytes)
    : source(std::move(source)),
      size(size),
      mostBlocks(std::max(leastRequest, cacheBytes / blockBytes)) {}

CZVFTCachedInStream::~CZVFTCachedInStream() = default;

bool CZVFTCachedInStream::Read(void* buffer, u64* byteCount) {
    u8* const bytes = static_cast<u8*>(buffer);
    const u64 wanted = std::min(*byteCount, pos < size ? size - pos : 0);
    *byteCount = 0;
    while (*byteCount < wanted) {
        const u64 begin = pos % blockBytes;
        const u64 left = wanted - *byteCount;
        Block* block = Find(pos / blockBytes);
        if (block == nullptr) {
            const u64 first = pos / blockBytes;
            if (!Fetch(first, RequestLength(first, BlocksOf(begin + left)))) return false;
            block = Find(pos / blockBytes);
        }
        const u64 count = std::min(left, block->bytes.size() - begin);
        std::memcpy(bytes + *byteCount, block->bytes.data() + begin, count);
        pos += count;
        *byteCount += count;
    }
    return true;
}

u64 CZVFTCachedInStream::GetPos() {
    return pos;
}

int CZVFTCachedInStream::Seek(u64 newPos) {
    pos = newPos;
    return 0;
}

u64 CZVFTCachedInStream::GetSize() {
    return size;
}

CZVFTCachedInStream::Block* CZVFTCachedInStream::Find(u64 number) {
    const auto found = blocks.find(number);
    if (found == blocks.end()) return nullptr;
    found->second.lastUse = ++uses;
    return &found->second;
}

/// The blocks from `first` on that one request is to bring, up to the next one that is kept.
u64 CZVFTCachedInStream::RequestLength(u64 first, u64 wanted) const {
    const u64 ahead = first == requestEnd ? std::min(2 * requestLength, mostBlocks / 4) : 0;
    const u64 most =
        std::min({std::max({wanted, ahead, leastRequest}), mostBlocks, BlocksOf(size) - first});
    u64 length = 1;
    while (length < most && !blocks.contains(first + length)) ++length;
    return length;
}

void CZVFTCachedInStream::Expect(u64 position, u64 byteCount) {
    if (position >= size || byteCount == 0) return;
    u64 first = position / blockBytes;
    u64 end = BlocksOf(position + std::min(byteCount, size - position));
    while (first < end && blocks.contains(first)) ++first;
    while (first < end && blocks.contains(end - 1)) --end;
    const u64 wanted = end - first;
    if (wanted == 0 || wanted > std::max(mostBlocks, mostExpected)) return;
    Fetch(first, first == requestEnd ? RequestLength(first, wanted) : wanted);
}

/// Asks for `length` blocks from `first` on in one request.
bool CZVFTCachedInStream::Fetch(u64 first, u64 length) {
    const u64 position = first * blockBytes;
    std::vector<u8> bytes(std::min(length * blockBytes, size - position));
    if (source(position, bytes.data(), bytes.size()) != bytes.size()) return false;
    while (length <= mostBlocks && blocks.size() + length > mostBlocks) DropOldest();
    for (u64 i = 0; i < length; ++i) {
        const u64 begin = i * blockBytes;
        const u64 end = std::min<u64>(begin + blockBytes, bytes.size());
        Block& block = blocks[first + i];
        block.bytes.assign(bytes.data() + begin, bytes.data() + end);
        block.lastUse = ++uses;
    }
    requestEnd = first + length;
    requestLength = length;
    return true;
}

void CZVFTCachedInStream::DropOldest() {
    blocks.erase(std::min_element(blocks.begin(), blocks.end(), [](const auto& a, const auto& b) {
        return a.second.lastUse < b.second.lastUse;
    }));
}

}  // namespace ZVSmartFormat
