#pragma once

#include <algorithm>
#include <string>

#include "container/Findings.h"
#include "layout/SectionLocator.h"

namespace ZVSmartZvg {

/// Where bytes are, for people: `In a decoded block`, positions are told beside the block's own.
struct Place {
    u64 filePosition = 0;  ///< from the file's base: of the section's stream, or of its block
    bool inBlock = false;  ///< whether positions count from a decoded block's first byte
    u64 streamBase = 0;    ///< the file's base in the stream, where not in a block

    unsigned long long Of(u64 position) const {
        return inBlock ? filePosition : position - streamBase;
    }
    std::string Name(const std::string& what, u64 position) const {
        return inBlock ? what + " at byte " + std::to_string(position) + " of its block" : what;
    }
};

/// What the head of a section says against what can be and what a writer would say.
inline void CheckHead(const SZVLGSectionHead& head, u64 bytesAvailable, unsigned long long position,
                      const std::string& name, Findings& findings) {
    if (!head.IsPossible(bytesAvailable)) {
        findings.Add(position, name + ": its sizes cannot be");
        return;
    }
    if (head.totalSize != head.tableOffset + u64{head.count} * head.EntryWidth())
        findings.Add(position, name + ": total size, count and offset table disagree");
    if (head.tableWidth != SZVLGSectionHead::Of(0, head.tableOffset).tableWidth)
        findings.Add(position, name + ": the offset width is not the one for its size");
}

/// Checks a section and its records, which must follow each other without gaps.
/// `visit(i)` reads record i, to whose first byte `in` was moved, and leaves `in` behind it.
/// Records that overlap are findings and not visited, so that the work stays in proportion to
/// the bytes. Leaves `in` behind the section and behind all that was visited, so that the same
/// bytes are never met again from another place; returns the section.
template <class Source, class Visit>
Section CheckSection(Source& in, const Place& place, const std::string& what, Findings& findings,
                     Visit visit) {
    const u64 start = in.GetPos();
    const std::string name = place.Name(what, start);
    SZVLGSectionHead stored;
    ZVSmartSerial::FieldReader<Source> reader(in);
    VisitSectionHead(reader, stored);
    const u64 bytesAvailable = in.GetSize() - start;
    CheckHead(stored, bytesAvailable, place.Of(start), name, findings);
    if (!stored.IsPossible(bytesAvailable)) ZVSmartFormat::ThrowOutOfData();

    const Section section = ReadSection(in, start);
    u64 cursor = start + SZVLGSectionHead::byteSize;
    const u64 recordsEnd = start + section.head.tableOffset;
    for (u32 i = 0; i < section.Count(); ++i) {
        const std::string record = name + ", record " + std::to_string(i);
        const u64 position = start + ReadEntry(in, section, i);
        if (position != cursor)
            findings.Add(place.Of(cursor), record + ": does not begin where the one before ends");
        if (position < cursor || position >= recordsEnd) continue;
        in.Seek(position);
        findings.Guard(place.Of(position), record, [&] { visit(i); });
        cursor = in.GetPos();
    }
    if (cursor != recordsEnd)
        findings.Add(place.Of(cursor), name + ": the records do not end at the offset table");
    in.Seek(std::max(section.End(), cursor));
    return section;
}

}  // namespace ZVSmartZvg
