#pragma once

#include <vector>

#include "ZVSmartFormat/Stream.h"
#include "layout/SectionHead.h"

namespace ZVSmartZvg {

/// Writes one indexed section, record by record, onto a stream that it borrows. The stream
/// throws what it cannot write.
class SectionWriter {
  public:
    /// Writes a placeholder head at the stream's position.
    explicit SectionWriter(ZVSmartFormat::CZVFTOutStream& out);

    /// The next record begins at the stream's position. Throws "encode error" where that is
    /// more than 32 bits from the head.
    void BeginRecord();

    /// Writes the offset table and the real head, and leaves the stream behind the section.
    void End();

  private:
    void WriteHead(const SZVLGSectionHead& head);
    void WriteTable(u32 entryWidth);

    ZVSmartFormat::CZVFTOutStream& out;
    u64 start;
    std::vector<u32> offsets;
};

}  // namespace ZVSmartZvg
