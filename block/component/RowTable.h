#pragma once

#include <string_view>
#include <vector>

#include "ZVSmartZvg/Export.h"
#include "layout/SectionWriter.h"
#include "stream/FieldWriter.h"
#include "stream/KeyTable.h"
#include "stream/OwnedBuffer.h"
#include "stream/RowStore.h"

namespace ZVSmartZvg {

/// A buffer in which a row is serialised before it is stored.
class RowBuffer {
  public:
    /// Serialises anew: `write` gets a field writer.
    template <class Write>
    std::string_view Fill(Write write) {
        ZVSmartFormat::CZVFTAllocBufferOutStream out(&buffer);
        ZVSmartSerial::FieldWriter writer(out);
        write(writer);
        return {reinterpret_cast<const char*>(buffer.data), static_cast<std::size_t>(out.GetPos())};
    }

  private:
    ZVSmartFormat::OwnedBuffer buffer;
};

/// A find-or-insert table of serialised rows, in the order of insertion. The first row that
/// brings a key is the one that stays.
class RowTable {
  public:
    bool Has(std::string_view key) const { return Find(key) != ZVSmartFormat::KeyTable::none; }
    /// The number of the row with `key`, or `KeyTable::none`.
    u32 Find(std::string_view key) const { return keys.Find(key); }
    /// The number of the row with `key`; where there is none, `row()` gives its bytes.
    template <class MakeRow>
    u32 FindOrAdd(std::string_view key, MakeRow makeRow) {
        const u32 number = keys.Find(key);
        return number != ZVSmartFormat::KeyTable::none ? number : Add(key, makeRow());
    }
    /// Adds a row whose key is not there yet; its number is the result.
    u32 Add(std::string_view key, std::string_view row) {
        rows.Append(row);
        try {
            keys.Add(key);
        } catch (...) {
            rows.RemoveLast();
            throw;
        }
        return rows.Count() - 1;
    }

    u32 Count() const { return rows.Count(); }
    std::string_view Row(u32 number) const { return rows.Row(number); }

  private:
    ZVSmartFormat::KeyTable keys;
    ZVSmartFormat::RowStore rows;
};

/// The tables below the rows of another, read only; a list that stayed behind its rows when
/// memory ran out reads as if it went on with empty tables.
template <class Below>
const Below& TableBelow(const std::vector<Below>& tables, u32 row) {
    static const Below empty;
    return row < tables.size() ? tables[row] : empty;
}

/// Writes the rows as one indexed section; `below(i)` writes what hangs under row i.
template <class WriteBelow>
void WriteRowSection(ZVSmartFormat::CZVFTOutStream& out, const RowTable& table, WriteBelow below) {
    SectionWriter section(out);
    for (u32 i = 0; i < table.Count(); ++i) {
        section.BeginRecord();
        out.Write(table.Row(i).data(), table.Row(i).size());
        below(i);
    }
    section.End();
}

/// The same for rows under which nothing hangs.
inline void WriteRowSection(ZVSmartFormat::CZVFTOutStream& out, const RowTable& table) {
    WriteRowSection(out, table, [](u32) {});
}

}  // namespace ZVSmartZvg
