#pragma once

#include "ZVSmartZvg/BlockFinding.h"
#include "ZVSmartZvg/BlockReader.h"

namespace ZVSmartZvg {

/// What hid behind the answer to a reader's last query. A query that finds what it looks for
/// costs a few stores here; the text is made when it is asked for.
class LastMiss {
  public:
    using u32 = ZVSmartFormat::u32;
    using u64 = ZVSmartFormat::u64;
    static constexpr u32 none = 0xFFFFFFFF;

    /// What a query is looking at: "floor" 3, "component" 7. A name ends the program alive.
    struct Subject {
        const char* what = "";
        u32 number = none;
        const char* record = "";
        u32 recordNumber = none;
    };

    EZVLGMiss Kind() const { return kind; }

    void Clear() { kind = EZVLGMiss::None; }
    /// From now on `newSubject` is looked at, whose block or bytes are at `newPosition`.
    void LookAt(u64 newPosition, const Subject& newSubject) {
        if (kind != EZVLGMiss::None) return;  // the first one counts
        position = newPosition;
        subject = newSubject;
    }

    const Subject& LookedAt() const { return subject; }

    void NoteAbsent() { kind = EZVLGMiss::Absent; }
    /// `newReason` goes on about the subject and ends the program alive.
    void NoteDamaged(const char* newReason) {
        if (kind == EZVLGMiss::Damaged) return;
        kind = EZVLGMiss::Damaged;
        reason = newReason;
    }
    /// The same where it is the host's limit that stands in the way.
    void NoteTooLarge(const char* newReason) {
        kind = EZVLGMiss::TooLarge;
        reason = newReason;
    }
    void NoteUnread(u64 newPosition) {
        kind = EZVLGMiss::Unread;
        position = newPosition;
        reason = "the stream does not deliver bytes that it has";
    }
    /// Notes what the exception under way says about the subject. Being out of memory says
    /// nothing.
    void NoteException();

    /// Replaces `finding` where there is something to tell.
    void Tell(SZVLGBlockFinding& finding) const;

  private:
    EZVLGMiss kind = EZVLGMiss::Absent;
    u64 position = 0;  // from the file's base
    Subject subject;
    const char* reason = "";
};

}  // namespace ZVSmartZvg
