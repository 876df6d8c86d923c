#pragma once

#include "layout/SectionHead.h"
#include "stream/ByteOrder.h"
#include "stream/Failures.h"
#include "stream/FieldReader.h"

// Finding records. A `Source` is a stream that throws where bytes run out and hands them out by
// `Take`: a RecordInStream over a decoded block, or a CheckedInStream over the caller's file.

namespace ZVSmartZvg {

/// A section whose place is known, its head made safe.
struct Section {
    u64 position = 0;  ///< of the head's first byte
    SZVLGSectionHead head;
    bool isWhole = true;  ///< whether its stored sizes and count agree

    u32 Count() const { return head.count; }
    /// The first byte behind the section.
    u64 End() const { return position + head.totalSize; }
    u64 EntryPosition(u32 i) const {
        return position + head.tableOffset + u64{i} * head.EntryWidth();
    }
};

/// The section at `position`. Throws "seek over buffer size" where not even a head is there.
template <class Source>
Section ReadSection(Source& source, u64 position) {
    source.Seek(position);
    ZVSmartSerial::FieldReader<Source> reader(source);
    Section section;
    section.position = position;
    VisitSectionHead(reader, section.head);
    const u64 bytesAvailable = source.GetSize() - position;
    section.isWhole = section.head.IsWhole(bytesAvailable);
    section.head.CutTo(bytesAvailable);
    return section;
}

/// Entry `i` of the offset table; `i` is below the count.
template <class Source>
u32 ReadEntry(Source& source, const Section& section, u32 i) {
    source.Seek(section.EntryPosition(i));
    const u32 width = section.head.EntryWidth();
    const u8* const bytes = source.Take(width);
    if (width == 1) return *bytes;
    if (width == 2) return ZVSmartFormat::LoadBigEndian<ZVSmartFormat::u16>(bytes);
    return ZVSmartFormat::LoadBigEndian<u32>(bytes);
}

/// The position of record `i`, which is below the count. False where its offset leads out of the
/// section's records.
template <class Source>
bool FindRecord(Source& source, const Section& section, u32 i, u64& position) {
    const u32 entry = ReadEntry(source, section, i);
    if (entry < SZVLGSectionHead::byteSize || entry >= section.head.tableOffset) return false;
    position = section.position + entry;
    return true;
}

/// Moves `source` to record `i`, which is below the count. Throws "seek over buffer size" where
/// its offset leads out of the section's records.
template <class Source>
void SeekRecord(Source& source, const Section& section, u32 i) {
    u64 position = 0;
    if (!FindRecord(source, section, i, position)) ZVSmartFormat::ThrowOutOfData();
    source.Seek(position);
}

}  // namespace ZVSmartZvg
