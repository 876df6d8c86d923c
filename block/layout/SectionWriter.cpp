#include "layout/SectionWriter.h"

#include <limits>

#include "stream/ByteOrder.h"
#include "stream/Failures.h"
#include "stream/FieldWriter.h"

namespace ZVSmartZvg {

using ZVSmartFormat::CZVFTOutStream;
using ZVSmartFormat::StoreBigEndian;

SectionWriter::SectionWriter(CZVFTOutStream& out) : out(out), start(out.GetPos()) {
    SZVLGSectionHead placeholder;
    placeholder.totalSize = 0;
    placeholder.tableOffset = 0;
    WriteHead(placeholder);
}

void SectionWriter::BeginRecord() {
    const u64 offset = out.GetPos() - start;
    if (offset > std::numeric_limits<u32>::max()) ZVSmartFormat::ThrowNotWritten();
    offsets.push_back(static_cast<u32>(offset));
}

void SectionWriter::End() {
    const SZVLGSectionHead head = SZVLGSectionHead::Of(offsets.size(), out.GetPos() - start);
    WriteTable(head.EntryWidth());
    const u64 end = out.GetPos();
    out.Seek(start);
    WriteHead(head);
    out.Seek(end);
}

void SectionWriter::WriteHead(const SZVLGSectionHead& head) {
    ZVSmartSerial::FieldWriter writer(out);
    VisitSectionHead(writer, head);
}

void SectionWriter::WriteTable(u32 entryWidth) {
    std::vector<u8> table(offsets.size() * entryWidth);
    u8* entry = table.data();
    for (const u32 offset : offsets) {
        if (entryWidth == 1) *entry = static_cast<u8>(offset);
        if (entryWidth == 2) StoreBigEndian(static_cast<ZVSmartFormat::u16>(offset), entry);
        if (entryWidth == 4) StoreBigEndian(offset, entry);
        entry += entryWidth;
    }
    if (!table.empty()) out.Write(table.data(), table.size());
}

}  // namespace ZVSmartZvg
