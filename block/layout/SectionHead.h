#pragma once

#include <algorithm>

#include "ZVSmartFormat/Stream.h"

// An indexed section, the one structure of every table:
//   0   u8   tableWidth   0x00, 0x40, 0x80: offsets of 1, 2, 4 bytes
//   1   u32  totalSize    from the head's first byte to the end of the offset table
//   5   u32  count        of records
//   9   u32  tableOffset  from the head's first byte to the offset table
//   13  the records, back to back
//   tableOffset  count offsets, each from the head's first byte to its record

namespace ZVSmartZvg {

using ZVSmartFormat::u32;
using ZVSmartFormat::u64;
using ZVSmartFormat::u8;

struct SZVLGSectionHead {
    static constexpr u32 byteSize = 13;
    static constexpr u8 width2 = 0x40;  ///< the least `tableWidth` of 2-byte offsets
    static constexpr u8 width4 = 0x80;  ///< and of 4-byte offsets

    u8 tableWidth = 0;
    u32 totalSize = byteSize;
    u32 count = 0;
    u32 tableOffset = byteSize;

    /// The head of a finished section whose records end at `tableOffset`. Throws "encode error"
    /// where its size passes 32 bits.
    static SZVLGSectionHead Of(u64 count, u64 tableOffset);

    /// Bytes of one entry of the offset table.
    u32 EntryWidth() const {
        if (tableWidth < width2) return 1;
        return tableWidth < width4 ? 2 : 4;
    }

    /// Whether head, records and table can lie in `bytesAvailable` bytes.
    bool IsPossible(u64 bytesAvailable) const {
        return tableOffset >= byteSize && tableOffset <= totalSize && totalSize <= bytesAvailable;
    }

    /// Whether it can lie there and its sizes and count agree: no record is hidden.
    bool IsWhole(u64 bytesAvailable) const {
        return IsPossible(bytesAvailable) && totalSize == tableOffset + u64{count} * EntryWidth();
    }

    /// Makes an untrusted head safe to use: one that is not possible has no records, a count is
    /// cut to what the table holds.
    void CutTo(u64 bytesAvailable) {
        const u32 entries =
            IsPossible(bytesAvailable) ? (totalSize - tableOffset) / EntryWidth() : 0;
        count = std::min(count, entries);
    }
};

/// What is wrong with a head of a section that has `bytesAvailable` bytes; null where it is as a
/// writer would have it.
inline const char* FaultOf(const SZVLGSectionHead& head, u64 bytesAvailable) {
    if (!head.IsPossible(bytesAvailable)) return "its sizes cannot be";
    if (!head.IsWhole(bytesAvailable)) return "total size, count and offset table disagree";
    if (head.tableWidth != SZVLGSectionHead::Of(0, head.tableOffset).tableWidth)
        return "the offset width is not the one for its size";
    return nullptr;
}

/// The 13 bytes of a head, told once for both directions.
template <class Visitor, class Head>
void VisitSectionHead(Visitor& visitor, Head& head) {
    visitor.U8(head.tableWidth);
    visitor.U32(head.totalSize);
    visitor.U32(head.count);
    visitor.U32(head.tableOffset);
}

}  // namespace ZVSmartZvg
