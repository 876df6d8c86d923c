#include "component/RowTable.h"

#include <cstdlib>

namespace ZVSmartZvg {

RowBuffer::~RowBuffer() {
    std::free(buffer.data);
}

u32 RowTable::Add(std::string_view key, std::string_view row) {
    rows.Append(row);
    try {
        keys.Add(key);
    } catch (...) {
        rows.RemoveLast();
        throw;
    }
    return rows.Count() - 1;
}

void WriteRowSection(ZVSmartFormat::CZVFTOutStream& out, const RowTable& table) {
    WriteRowSection(out, table, [](u32) {});
}

}  // namespace ZVSmartZvg
