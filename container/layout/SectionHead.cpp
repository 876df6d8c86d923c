#include "container/layout/SectionHead.h"

#include <algorithm>
#include <limits>

#include "stream/Failures.h"

namespace ZVSmartZvg {

namespace {

constexpr u8 width2 = 0x40;
constexpr u8 width4 = 0x80;

}  // namespace

SZVLGSectionHead SZVLGSectionHead::Of(u64 count, u64 tableOffset) {
    constexpr u64 largest = std::numeric_limits<u32>::max();
    if (tableOffset > largest || count > largest) ZVSmartFormat::ThrowNotWritten();
    SZVLGSectionHead head;
    head.tableWidth = tableOffset < 0x100 ? u8{0} : tableOffset < 0x10000 ? width2 : width4;
    head.count = static_cast<u32>(count);
    head.tableOffset = static_cast<u32>(tableOffset);
    const u64 totalSize = tableOffset + count * head.EntryWidth();
    if (totalSize > largest) ZVSmartFormat::ThrowNotWritten();
    head.totalSize = static_cast<u32>(totalSize);
    return head;
}

u32 SZVLGSectionHead::EntryWidth() const {
    if (tableWidth < width2) return 1;
    return tableWidth < width4 ? 2 : 4;
}

bool SZVLGSectionHead::IsPossible(u64 bytesAvailable) const {
    return tableOffset >= byteSize && tableOffset <= totalSize && totalSize <= bytesAvailable;
}

void SZVLGSectionHead::CutTo(u64 bytesAvailable) {
    count =
        IsPossible(bytesAvailable) ? std::min(count, (totalSize - tableOffset) / EntryWidth()) : 0;
}

}  // namespace ZVSmartZvg
