#pragma once

#include <algorithm>
#include <string>

#include "container/Findings.h"
#include "layout/SectionLocator.h"

namespace ZVSmartZvg {

/// Where bytes are, for people: what is in a decoded block is told by the block, its position in
/// the file and the byte within the block.
struct Place {
    u64 filePosition = 0;  ///< of the block, from the file's base
    std::string block;     ///< its name; empty where not in a block
    u64 streamBase = 0;    ///< the file's base in the stream, where not in a block

    unsigned long long Of(u64 position) const {
        return block.empty() ? position - streamBase : filePosition;
    }
    std::string Name(const char* what, u64 position) const {
        return block.empty() ? what : block + ", " + what + " at byte " + std::to_string(position);
    }
};

/// Checks a section and its records, which must follow each other without gaps.
/// `visit(i)` reads record i, to whose first byte `in` was moved, and leaves `in` behind it.
///
/// One wound is one finding: behind a record that does not read, or that is not where it should
/// be, the next is taken where its offset leads, and what is found in a misplaced record is not
/// told besides. Where the head is wrong, nothing is told of offsets. Going back costs of an
/// allowance as large as the section, so that the work stays in proportion to the bytes. Leaves
/// `in` behind the section and behind all that was visited; returns the section. Throws
/// Findings::Told where it cannot be one.
template <class Source, class Visit>
Section CheckSection(Source& in, const Place& place, const char* what, Findings& findings,
                     Visit visit) {
    const u64 start = in.GetPos();
    const auto name = [&] { return place.Name(what, start); };
    SZVLGSectionHead stored;
    ZVSmartSerial::FieldReader<Source> reader(in);
    VisitSectionHead(reader, stored);
    const u64 bytesAvailable = in.GetSize() - start;
    const char* const headFault = FaultOf(stored, bytesAvailable);
    if (headFault != nullptr) findings.Add(place.Of(start), name() + ": " + headFault);
    if (!stored.IsPossible(bytesAvailable)) throw Findings::Told();

    const Section section = ReadSection(in, start);
    const u64 recordsEnd = start + section.head.tableOffset;
    u64 cursor = start + SZVLGSectionHead::byteSize;
    u64 furthest = cursor;
    u64 allowance = section.head.tableOffset;
    bool isLost = false;  // where the record before ends is not known
    const auto leave = [&] {
        in.Seek(std::max(section.End(), furthest));
        return section;
    };
    for (u32 i = 0; i < section.Count(); ++i) {
        const auto record = [&] { return name() + ", record " + std::to_string(i); };
        const u64 position = start + ReadEntry(in, section, i);
        const bool isMisplaced = position != cursor && !isLost;
        if (isMisplaced && headFault != nullptr) return leave();  // offsets that are none
        const std::size_t before = findings.Count();
        const u64 expected = cursor;
        const u64 back = position < furthest ? furthest - position : 0;
        isLost = isMisplaced;
        if (position < recordsEnd && back <= allowance) {
            allowance -= back;
            in.Seek(position);
            if (!findings.Guard(place.Of(position), record, [&] { visit(i); })) {
                isLost = true;
                if (isMisplaced) findings.CutTo(before);
            }
            cursor = in.GetPos();
            furthest = std::max(furthest, cursor);
        }
        if (isMisplaced)
            findings.Add(place.Of(expected),
                         record() + ": does not begin where the one before ends");
    }
    if (furthest != recordsEnd && !isLost && headFault == nullptr)
        findings.Add(place.Of(furthest), name() + ": the records do not end at the offset table");
    return leave();
}

}  // namespace ZVSmartZvg
