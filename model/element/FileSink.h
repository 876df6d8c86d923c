#pragma once

#include <cstdio>
#include <string_view>

#include "ZVSmartFormat/Stream.h"

namespace ZVSmartModel {

/// Writes to an open file and remembers the first failure: from then on every write is short, so
/// that whoever writes learns of it.
class FileSink : public ZVSmartFormat::CZVFTOutStream {
  public:
    /// Takes over `descriptor` and writes at its position.
    explicit FileSink(int descriptor);
    ~FileSink() override;

    ZVSmartFormat::u64 Write(const void* buffer, ZVSmartFormat::u64 size) override;
    ZVSmartFormat::u64 GetPos() override;
    int Seek(ZVSmartFormat::u64 pos) override;
    bool Reserve(ZVSmartFormat::u64 size) override;

    /// Hands everything to the system and closes the file. False where any of it failed.
    bool Close();

    /// The `errno` of the first failure; 0 while there is none.
    int Failure() const { return failure; }

  private:
    void NoteFailure();

    std::FILE* file = nullptr;
    int failure = 0;
};

/// Writes all of `text`. Throws Error InputOutput where `out` takes less.
void WriteWhole(ZVSmartFormat::CZVFTOutStream& out, std::string_view text);

}  // namespace ZVSmartModel
