#include "ZVSmartFormat/CachedStream.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace ZVSmartFormat {

namespace {

constexpr u64 blockBytes = 4 << 10;
constexpr u64 leastRequest = 64;    ///< blocks
constexpr u64 mostExpected = 4096;  ///< blocks

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
            const u64 here = std::max(BlocksOf(begin + left), leastRequest);
            if (!Fetch(first, RequestLength(first, here))) return false;
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

/// The blocks from `first` on that one request is to bring, up to the next one that is kept: more
/// than are wanted where it goes on from the last request.
u64 CZVFTCachedInStream::RequestLength(u64 first, u64 wanted) const {
    const u64 ahead = first == requestEnd ? std::min(2 * requestLength, mostBlocks / 2) : 0;
    const u64 most = std::min({std::max(wanted, ahead), mostBlocks, BlocksOf(size) - first});
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
    Fetch(first, first == requestEnd ? std::max(wanted, RequestLength(first, wanted)) : wanted);
}

bool CZVFTCachedInStream::Holds(u64 position, u64 byteCount) const {
    if (position > size || byteCount > size - position) return false;
    const u64 end = BlocksOf(position + byteCount);
    for (u64 number = position / blockBytes; number < end; ++number) {
        if (!blocks.contains(number)) return false;
    }
    return true;
}

/// Asks for `length` blocks from `first` on in one request.
bool CZVFTCachedInStream::Fetch(u64 first, u64 length) {
    const u64 position = first * blockBytes;
    std::vector<u8> bytes(std::min(length * blockBytes, size - position));
    if (source(position, bytes.data(), bytes.size()) != bytes.size()) return false;
    requestEnd = first + length;
    requestLength = length;
    DropOldest();
    for (u64 i = 0; i < length; ++i) {
        const u64 begin = i * blockBytes;
        const u64 end = std::min<u64>(begin + blockBytes, bytes.size());
        Block& block = blocks[first + i];
        block.bytes.assign(bytes.data() + begin, bytes.data() + end);
        block.lastUse = ++uses;
    }
    return true;
}

/// Makes room for the blocks of the last request, where so many may be kept.
void CZVFTCachedInStream::DropOldest() {
    if (requestLength > mostBlocks || blocks.size() + requestLength <= mostBlocks) return;
    const u64 dropped = blocks.size() + requestLength - mostBlocks;
    std::vector<u64> byUse;
    byUse.reserve(blocks.size());
    for (const auto& [number, block] : blocks) byUse.push_back(block.lastUse);
    const auto last = byUse.begin() + static_cast<std::ptrdiff_t>(dropped - 1);
    std::nth_element(byUse.begin(), last, byUse.end());
    std::erase_if(blocks, [&](const auto& kept) { return kept.second.lastUse <= *last; });
}

}  // namespace ZVSmartFormat
