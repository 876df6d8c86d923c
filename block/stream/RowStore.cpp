#include "stream/RowStore.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "stream/Failures.h"

namespace ZVSmartFormat {

namespace {

constexpr u64 smallestPiece = u64{4} * 1024;
constexpr u64 largestPiece = u64{256} * 1024;

}  // namespace

void RowStore::AddPiece(u64 atLeast) {
    // An eighth of what is there: little is left over in small and in large stores.
    const u64 size = std::max(atLeast, std::clamp(totalBytes / 8, smallestPiece, largestPiece));
    pieces.push_back(std::make_unique_for_overwrite<u8[]>(static_cast<std::size_t>(size)));
    free = pieces.back().get();
    freeBytes = size;
    totalBytes += size;
}

void RowStore::Append(std::string_view row) {
    const u64 needed = sizeof(u32) + row.size();
    if (row.size() > std::numeric_limits<u32>::max()) ThrowNotWritten();
    if (rows.size() >= std::numeric_limits<u32>::max()) ThrowNotWritten();
    if (needed > freeBytes) AddPiece(needed);
    rows.push_back(free);
    const u32 length = static_cast<u32>(row.size());
    std::memcpy(free, &length, sizeof length);
    if (!row.empty()) std::memcpy(free + sizeof length, row.data(), row.size());
    free += needed;
    freeBytes -= needed;
}

std::string_view RowStore::Row(u32 i) const {
    u32 length = 0;
    std::memcpy(&length, rows[i], sizeof length);
    return {reinterpret_cast<const char*>(rows[i] + sizeof length), length};
}

void RowStore::Clear() {
    *this = RowStore();
}

}  // namespace ZVSmartFormat
