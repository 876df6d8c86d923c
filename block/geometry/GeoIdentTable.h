#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ZVSmartZvg/GeoIndex.h"
#include "stream/RecordInStream.h"

namespace ZVSmartZvg {

/// The identifications of an open file. They are compared where they lie in the decoded index
/// block: big-endian UTF-16 orders under memcmp as its units do.
class GeoIdentTable {
  public:
    GeoIdentTable() = default;

    /// Reads the table at `in`'s position; the bytes behind `in` must outlive the table. Entries
    /// may stand in any order; of equal identifications the first counts. Throws
    /// "seek over buffer size" where the table is cut short.
    explicit GeoIdentTable(ZVSmartFormat::RecordInStream& in);

    u32 Count() const { return static_cast<u32>(entries.size()); }

    /// False, with `index` unchanged, for an identification that is not there.
    bool Find(const std::wstring& identification, SZVLGZvgGeoIndex& index) const;

    /// The i-th in ascending order; `i` is below the count.
    void Get(u32 i, std::wstring& identification, SZVLGZvgGeoIndex& index) const;

    /// The highest block number that an entry of the file has; 0 without entries.
    u32 HighestBlock() const { return highestBlock; }

    /// Whether the file's entries stood in strictly ascending order.
    bool WasInOrder() const { return inOrder; }

  private:
    std::string_view KeyAt(const u8* entry) const;
    SZVLGZvgGeoIndex IndexAt(const u8* entry) const;
    void Sort();
    void SetLandmarks();
    std::pair<std::size_t, std::size_t> RangeOf(std::string_view key) const;

    const u8* bytes = nullptr;
    std::vector<u32> entries;  // offsets of the entries, ascending by key
    // Of every 32nd entry the 8 bytes behind what all keys begin with: a search begins in these,
    // which fit a processor's cache where a million entries do not.
    std::vector<u64> landmarks;
    std::size_t commonBytes = 0;
    u32 highestBlock = 0;
    bool inOrder = true;
};

}  // namespace ZVSmartZvg
