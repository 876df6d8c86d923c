#include "web/native/RangeStream.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <tuple>

namespace ZVSmartModel::Web {

bool RangeStream::Add(std::uint64_t position, const std::uint8_t* bytes, std::uint64_t byteCount) {
    if (position % blockBytes != 0) return false;
    while (position < size) {
        const std::uint64_t here = std::min(blockBytes, size - position);
        if (byteCount < here) break;
        Block& block = blocks[position / blockBytes];
        block.bytes.assign(bytes, bytes + here);
        block.lastUse = ++uses;
        block.wasRead = false;
        position += here;
        bytes += here;
        byteCount -= here;
    }
    return true;
}

void RangeStream::Trim(std::uint64_t most) {
    const std::size_t keep = static_cast<std::size_t>(most / blockBytes);
    if (blocks.size() <= keep) return;
    std::vector<std::tuple<bool, std::uint64_t, std::uint64_t>> byUse;  // unread ones first
    byUse.reserve(blocks.size());
    for (const auto& [number, block] : blocks) {
        byUse.emplace_back(block.wasRead, block.lastUse, number);
    }
    std::sort(byUse.begin(), byUse.end());
    const auto isRead = [](const auto& entry) { return std::get<0>(entry); };
    const auto read = std::find_if(byUse.begin(), byUse.end(), isRead);
    // The newest of the unread ones go last.
    const auto late = std::min(read - byUse.begin(), static_cast<std::ptrdiff_t>(keep / 4 * 3));
    std::rotate(read - late, read, byUse.end());
    byUse.resize(byUse.size() - keep);
    for (const auto& [wasRead, lastUse, number] : byUse) blocks.erase(number);
}

bool RangeStream::Read(void* buffer, ZVSmartFormat::u64* byteCount) {
    auto* to = static_cast<std::uint8_t*>(buffer);
    std::uint64_t left = pos < size ? std::min(*byteCount, size - pos) : 0;
    *byteCount = left;
    while (left != 0) {
        const auto found = blocks.find(pos / blockBytes);
        if (found == blocks.end()) {
            if (!miss) miss = ByteRange{pos, left};
            *byteCount -= left;
            return false;
        }
        found->second.lastUse = ++uses;
        found->second.wasRead = true;
        const std::uint64_t begin = pos % blockBytes;
        const std::uint64_t count = std::min(left, found->second.bytes.size() - begin);
        std::memcpy(to, found->second.bytes.data() + begin, static_cast<std::size_t>(count));
        to += count;
        pos += count;
        left -= count;
    }
    return true;
}

int RangeStream::Seek(ZVSmartFormat::u64 newPos) {
    pos = newPos;
    return 0;
}

}  // namespace ZVSmartModel::Web
