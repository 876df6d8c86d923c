#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "ZVSmartFormat/Stream.h"

namespace ZVSmartFormat {

/// Rows of bytes in the order they were added. They lie in pieces of memory that never move, so
/// that a million rows cost little more than their bytes.
class RowStore {
  public:
    /// Adds a copy of `row`. Throws "encode error" where row or row count pass 32 bits; the
    /// store stays as it was on every throw.
    void Append(std::string_view row);
    /// Row `i`, below `Count()`; valid as long as the store.
    std::string_view Row(u32 i) const;
    u32 Count() const { return static_cast<u32>(rows.size()); }
    /// Takes the last row back; its memory stays until `Clear`.
    void RemoveLast() { rows.pop_back(); }
    /// Removes all rows and frees their memory.
    void Clear();

  private:
    void AddPiece(u64 atLeast);

    std::vector<std::unique_ptr<u8[]>> pieces;
    std::vector<const u8*> rows;  // each row is its u32 length in host order, then its bytes
    u8* free = nullptr;           // in the last piece
    u64 freeBytes = 0;
    u64 totalBytes = 0;
};

}  // namespace ZVSmartFormat
