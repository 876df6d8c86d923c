#include "component/FloorTables.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "component/IdentityKey.h"
#include "geometry/MemoryMeter.h"
#include "stream/FieldReader.h"
#include "stream/RecordInStream.h"

namespace ZVSmartZvg {

using ZVSmartFormat::AllocBuffer;
using ZVSmartFormat::CZVFTAllocBufferOutStream;
using ZVSmartFormat::CZVFTOutStream;
using ZVSmartFormat::KeyTable;
using ZVSmartSerial::FieldWriter;

namespace {

/// A row as it is stored: of rows with one GUID the first stands, and it may lead elsewhere.
SZVLGZvgGeoId StoredGeoId(std::string_view bytes) {
    ZVSmartFormat::RecordInStream in(bytes.data(), bytes.size());
    ZVSmartSerial::FieldReader<ZVSmartFormat::RecordInStream> reader(in);
    SZVLGZvgGeoId row;
    VisitGeoIdRow(reader, row);
    return row;
}

std::string FloorKey(const SZVLGZvgComp& comp) {
    return IdentityKey(comp.classLevel1Name.empty() ? L"none" : comp.classLevel1Name);
}

}  // namespace

u32 FloorTables::Enter(const SZVLGZvgComp& comp) {
    const u32 number = fields.FindOrAdd(FloorKey(comp), [&] {
        return buffer.Fill([&](FieldWriter& writer) { VisitFloorFields(writer, comp); });
    });
    if (floors.size() <= number) floors.resize(std::size_t{number} + 1);
    return number;
}

bool FloorTables::HasComponent(u32 floor, const SZVLGZvgComp& comp) const {
    return floors[floor].components.Has(IdentityKey(comp.compGuidName));
}

u32 FloorTables::EnterGeoId(Floor& floor, const SZVLGZvgGeoId& row) {
    return floor.geoIds.FindOrAdd(IdentityKey(row), [&] {
        const std::string_view bytes =
            buffer.Fill([&](FieldWriter& writer) { VisitGeoIdRow(writer, row); });
        longestGeoId = std::max<u64>(longestGeoId, bytes.size());
        return bytes;
    });
}

namespace {

/// The texts of a row that takes `byteCount` in a file.
u64 StoredGeoIdMemory(u64 byteCount) {
    constexpr u64 texts = 3;
    constexpr u64 bytesPerUnit = 2;
    return texts * ZVSmartFormat::perAllocation + sizeof(wchar_t) / bytesPerUnit * byteCount;
}

u64 OwnMemory(const SZVLGZvgGeoId& row) {
    return MeasureMemory(0, [&](MemoryMeter& meter) { VisitGeoIdRow(meter, row); });
}

}  // namespace

/// A row of its own may stand for one of the same GUID that came first and is longer.
u64 FloorTables::GeoIdMemory(const SZVLGZvgComp& comp, u64 limit) const {
    u64 fixed = 0, rowCount = 0, longestOwn = 0;
    for (const SZVLGZvgCompGeoRef& reference : comp.geoRefs) {
        constexpr u64 mostUnitsPerCharacter = 2;  // of the row that may be added
        fixed += 2 * sizeof(SZVLGZvgGeoId) +
                 StoredGeoIdMemory(2 * mostUnitsPerCharacter * reference.geoIdentification.size());
        rowCount += reference.geoIds.size();
        for (const SZVLGZvgGeoId& row : reference.geoIds)
            longestOwn = std::max(longestOwn, OwnMemory(row));
    }
    fixed += rowCount * sizeof(SZVLGZvgGeoId);
    const u64 atMost = fixed + rowCount * std::max(longestOwn, StoredGeoIdMemory(longestGeoId));
    if (atMost <= limit) return atMost;

    const u32 number = fields.Find(FloorKey(comp));
    static const RowTable noRows;
    const RowTable& stored = number < floors.size() ? floors[number].geoIds : noRows;
    for (const SZVLGZvgCompGeoRef& reference : comp.geoRefs)
        for (const SZVLGZvgGeoId& row : reference.geoIds) {
            const u32 found = stored.Find(IdentityKey(row));
            if (found != KeyTable::none) {
                fixed += StoredGeoIdMemory(stored.Row(found).size());
            } else {
                fixed += row.guidName.guid == SerialGuid() ? OwnMemory(row) : longestOwn;
            }
        }
    return fixed;
}

std::vector<u32> FloorTables::EnterReference(Floor& floor, const SZVLGZvgCompGeoRef& reference) {
    const std::wstring& identification = reference.geoIdentification;
    std::vector<u32> numbers;
    bool leadsThere = identification.empty();
    for (const SZVLGZvgGeoId& row : reference.geoIds) {
        const u32 number = EnterGeoId(floor, row);
        numbers.push_back(number);
        leadsThere = leadsThere ||
                     GetGeoIdentification(StoredGeoId(floor.geoIds.Row(number))) == identification;
    }
    if (leadsThere) return numbers;

    SZVLGZvgGeoId row;
    if (identification == row.guidName.name) {
        row.textA = identification;
    } else {
        row.guidName.name = identification;
    }
    numbers.push_back(EnterGeoId(floor, row));
    return numbers;
}

void FloorTables::AddComponent(u32 floorNumber, const SZVLGZvgComp& comp, const EntryRows& rows) {
    Floor& floor = floors[floorNumber];
    ReferenceRows referenceRows;
    referenceRows.reserve(comp.geoRefs.size());
    for (const SZVLGZvgCompGeoRef& reference : comp.geoRefs)
        referenceRows.push_back(EnterReference(floor, reference));
    floor.components.Add(IdentityKey(comp.compGuidName), buffer.Fill([&](FieldWriter& writer) {
        VisitComponentEntry(writer, comp, rows, referenceRows, version);
    }));
}

void FloorTables::Write(CZVFTOutStream& out, ZVSmartFormat::BlockQueue& blocks,
                        AllocBuffer& scratch) const {
    const auto section = std::make_shared<std::optional<SectionWriter>>();
    blocks.Do([section, &out] { section->emplace(out); });
    for (u32 i = 0; i < fields.Count(); ++i) {
        blocks.Do([this, section, i, &out] {
            (*section)->BeginRecord();
            out.Write(fields.Row(i).data(), fields.Row(i).size());
        });
        CZVFTAllocBufferOutStream block(&scratch);
        const Floor& floor = TableBelow(floors, i);
        WriteRowSection(block, floor.components);
        WriteRowSection(block, floor.geoIds);
        blocks.Write(scratch.data, block.GetPos());
    }
    blocks.Do([section] { (*section)->End(); });
}

}  // namespace ZVSmartZvg
