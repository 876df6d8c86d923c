#include "component/FloorTables.h"

#include <algorithm>

#include "component/IdentityKey.h"
#include "stream/CompressedBlock.h"
#include "stream/FieldReader.h"
#include "stream/RecordInStream.h"

namespace ZVSmartZvg {

using ZVSmartFormat::AllocBuffer;
using ZVSmartFormat::CZVFTAllocBufferOutStream;
using ZVSmartFormat::CZVFTOutStream;
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

}  // namespace

u32 FloorTables::Enter(const SZVLGZvgComp& comp) {
    const std::wstring& name = comp.classLevel1Name;
    const u32 number = fields.FindOrAdd(NameKey(name.empty() ? L"none" : name), [&] {
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
        return buffer.Fill([&](FieldWriter& writer) { VisitGeoIdRow(writer, row); });
    });
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

void FloorTables::Write(CZVFTOutStream& out, AllocBuffer& scratch) const {
    SectionWriter section(out);
    for (u32 i = 0; i < fields.Count(); ++i) {
        section.BeginRecord();
        out.Write(fields.Row(i).data(), fields.Row(i).size());
        CZVFTAllocBufferOutStream block(&scratch);
        const Floor& floor = TableBelow(floors, i);
        WriteRowSection(block, floor.components);
        WriteRowSection(block, floor.geoIds);
        ZVSmartFormat::WriteCompressedBlock(out, scratch.data, block.GetPos());
    }
    section.End();
}

}  // namespace ZVSmartZvg
