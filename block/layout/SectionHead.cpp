#include "layout/SectionHead.h"

#include <limits>

#include "stream/Failures.h"

namespace ZVSmartZvg {

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

}  // namespace ZVSmartZvg
