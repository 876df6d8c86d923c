#pragma once

#include "ZVSmartFormat/Stream.h"

namespace ZVSmartFormat {

/// A caller's stream, passed through as it is, that remembers the first failure to deliver bytes
/// which its size says are there: a failing disk is told from a file that is too short.
///
/// Whoever may find the stream elsewhere than this object left it asks `GetPos` first.
class WatchedInStream final : public CZVFTInStream {
  public:
    /// Watches `stream`, which is borrowed; null for none.
    void Watch(CZVFTInStream* stream) {
        inner = stream;
        hasFailed = false;
    }
    bool IsOpen() const { return inner != nullptr; }

    void ForgetFailure() { hasFailed = false; }
    bool HasFailed() const { return hasFailed; }
    /// Where the bytes are that were not delivered.
    u64 FailedAt() const { return failedAt; }

    bool Read(void* buffer, u64* byteCount) override {
        const u64 wanted = *byteCount;
        bool isRead = false;
        try {
            isRead = inner->Read(buffer, byteCount);
        } catch (...) {
            NoteIfThere(wanted);
            throw;
        }
        if (!isRead || *byteCount != wanted) NoteIfThere(wanted);
        pos += *byteCount;
        return isRead;
    }
    u64 GetPos() override { return pos = inner->GetPos(); }
    int Seek(u64 newPos) override {
        pos = newPos;
        try {
            const int result = inner->Seek(newPos);
            if (result != 0 && inner->GetPos() != newPos) NoteIfThere(0);
            return result;
        } catch (...) {
            NoteIfThere(0);
            throw;
        }
    }
    u64 GetSize() override { return inner->GetSize(); }

  private:
    void NoteIfThere(u64 byteCount) {
        if (hasFailed) return;
        const u64 size = inner->GetSize();
        if (pos > size || byteCount > size - pos) return;
        hasFailed = true;
        failedAt = pos;
    }

    CZVFTInStream* inner = nullptr;
    u64 pos = 0;
    u64 failedAt = 0;
    bool hasFailed = false;
};

}  // namespace ZVSmartFormat
