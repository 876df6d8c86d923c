#pragma once

#include "ZVSmartFormat/Stream.h"

/// Reads a block file from standard input, which begins where its reader left it. Where it cannot
/// seek, as a pipe, it is first copied to a file without a name. Streams of one process share what
/// they read, so that a file may be read twice.
class StandardInput : public ZVSmartFormat::CZVFTInStream {
  public:
    /// Throws ToolError Usage for a terminal, InputOutput where standard input cannot be read.
    StandardInput();

    bool Read(void* buffer, ZVSmartFormat::u64* size) override;
    ZVSmartFormat::u64 GetPos() override { return position; }
    int Seek(ZVSmartFormat::u64 pos) override;
    ZVSmartFormat::u64 GetSize() override { return size; }

  private:
    int descriptor = -1;  ///< kept open until the process ends
    ZVSmartFormat::u64 base = 0;
    ZVSmartFormat::u64 size = 0;
    ZVSmartFormat::u64 position = 0;
};
