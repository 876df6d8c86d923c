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

/// Reads the records of a section, wherever its offsets lead, in work that stays in proportion to
/// its bytes: going back costs of an allowance as large as the section.
template <class Source>
class RecordWalk {
  public:
    RecordWalk(Source& in, const Section& section)
        : in(in),
          cursor(section.position + SZVLGSectionHead::byteSize),
          furthest(cursor),
          recordsEnd(section.position + section.head.tableOffset),
          allowance(section.head.tableOffset) {}

    /// Where the last record that was read ends, and the furthest of all.
    u64 Cursor() const { return cursor; }
    u64 Furthest() const { return furthest; }
    u64 RecordsEnd() const { return recordsEnd; }

    /// Reads a record by `read`, and gives what that gives. True, with nothing read, for one behind
    /// the records or beyond the allowance.
    template <class Read>
    bool ReadAt(u64 position, Read read) {
        const u64 back = position < furthest ? furthest - position : 0;
        if (position >= recordsEnd || back > allowance) return true;
        allowance -= back;
        in.Seek(position);
        const bool isRead = read();
        cursor = in.GetPos();
        furthest = std::max(furthest, cursor);
        return isRead;
    }

  private:
    Source& in;
    u64 cursor;
    u64 furthest;
    u64 recordsEnd;
    u64 allowance;
};

/// Checks a section and its records, which must follow each other without gaps.
/// `visit(i)` reads record i, to whose first byte `in` was moved, and leaves `in` behind it.
///
/// One wound is one finding: behind a record that does not read, or that is not where it should
/// be, the next is taken where its offset leads, and what is found in a misplaced record that does
/// not read is not told besides. Where the head is wrong, nothing is told of offsets. Leaves `in`
/// behind the section and behind all that was visited; returns the section. Throws
/// Findings::AlreadyFound where it cannot be one.
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
    if (!stored.IsPossible(bytesAvailable)) throw Findings::AlreadyFound();

    const Section section = ReadSection(in, start);
    RecordWalk<Source> walk(in, section);
    bool isLost = false;  // where the next record should be is not known
    for (u32 i = 0; i < section.Count(); ++i) {
        const auto record = [&] { return name() + ", record " + std::to_string(i); };
        const u64 position = start + ReadEntry(in, section, i);
        const u64 expected = walk.Cursor();
        const bool isMisplaced = position != expected && !isLost;
        if (isMisplaced && headFault != nullptr) break;  // offsets that are none
        const std::size_t before = findings.Count();
        const auto read = [&] {
            return findings.Guard(place.Of(position), record, [&] { visit(i); });
        };
        const bool isRead = walk.ReadAt(position, read);
        if (isMisplaced) {
            if (!isRead) findings.CutTo(before);
            findings.Add(place.Of(expected),
                         record() + ": does not begin where the one before ends");
        }
        isLost = isMisplaced || !isRead;
    }
    if (walk.Furthest() != walk.RecordsEnd() && !isLost && headFault == nullptr)
        findings.Add(place.Of(walk.Furthest()),
                     name() + ": the records do not end at the offset table");
    in.Seek(std::max(section.End(), walk.Furthest()));
    return section;
}

}  // namespace ZVSmartZvg
