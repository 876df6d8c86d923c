#include "container/FloorCheck.h"

namespace ZVSmartZvg {

using ZVSmartFormat::MemoryBudget;
using ZVSmartFormat::RecordInStream;
using ZVSmartSerial::FieldReader;

namespace {

constexpr const char* componentTable = "component table";
constexpr const char* rowTable = "identification table";

std::string ComponentName(const Place& place, u32 i) {
    return place.block + ", component " + std::to_string(i);
}

}  // namespace

/// The rows come behind the components that refer to them, and are read first.
u32 FloorCheck::Run(RecordInStream& content, const Place& place) {
    const Section components = ReadSection(content, 0);
    content.Seek(components.End());
    ReadRows(content, place);
    const u64 end = content.GetPos();
    content.Seek(0);
    ReadComponents(content, place);
    tally.Tell(place.filePosition, findings);
    content.Seek(end);
    return components.Count();
}

void FloorCheck::ReadRows(RecordInStream& content, const Place& place) {
    const u64 start = content.GetPos();
    Identities identities;
    const auto readRow = [&](u32 i) {
        MemoryBudget memory;
        FieldReader<RecordInStream> reader(content, memory);
        SZVLGZvgGeoId row;
        VisitGeoIdRow(reader, row);
        SZVLGZvgGeoIndex geo;
        const bool leadsToGeo =
            identifications == nullptr || identifications->Find(GetGeoIdentification(row), geo);
        rows[i] = {ZVSmartFormat::defaultRecordMemory - memory.Left(), leadsToGeo};
        identities.Meet(i, row);
    };
    rowCount = CheckSection(content, place, rowTable, findings, readRow).Count();
    identities.Tell(
        place.filePosition, [&] { return place.Name(rowTable, start); }, findings);
}

/// A reference may have rows of the host's own beside the one that leads to its geometry.
template <class Name>
void FloorCheck::CheckReferences(const ReferenceRows& references, Name component) {
    for (const std::vector<u32>& numbers : references) {
        bool isAsked = false;
        bool leadsToGeo = false;
        for (const u32 number : numbers) {
            if (number == ZVLG_NONE) continue;
            if (number >= rowCount) {
                tally.Meet("row", [&] {
                    return component() + " refers to row " + std::to_string(number) +
                           " of the floor's identification table, which has " +
                           std::to_string(rowCount);
                });
                leadsToGeo = true;  // as it would, were the row there
                continue;
            }
            isAsked = true;
            const auto row = rows.find(number);
            leadsToGeo = leadsToGeo || row == rows.end() || row->second.leadsToGeo;
        }
        if (isAsked && !leadsToGeo)
            tally.Meet("geometry",
                       [&] { return component() + " has a part whose rows lead to no geometry"; });
    }
}

/// Throws OverLimit where a reader would: a few bytes of row numbers may name one long row over and
/// over.
void FloorCheck::ChargeRows(const ReferenceRows& references, MemoryBudget& memory) const {
    const auto take = [&memory](u64 bytes) {
        if (!memory.Take(bytes)) throw ZVSmartFormat::OverLimit();
    };
    for (const std::vector<u32>& numbers : references) {
        take(ZVSmartFormat::ListMemory(numbers.size(), sizeof(SZVLGZvgGeoId)));
        for (const u32 number : numbers)
            if (const auto row = rows.find(number); row != rows.end()) take(row->second.memory);
    }
}

void FloorCheck::ReadComponents(RecordInStream& content, const Place& place) {
    constexpr u64 mostKept = 64 << 10;
    Identities identities;
    PropertyList propertyMemory;  // which is used again, but for what is large
    CheckSection(content, place, componentTable, findings, [&](u32 i) {
        MemoryBudget memory;
        FieldReader<RecordInStream> reader(content, memory);
        SZVLGZvgComp comp;
        comp.compProperties.swap(propertyMemory);
        EntryRows classRows;
        ReferenceRows references;
        VisitComponentEntry(reader, comp, classRows, references, version);
        identities.Meet(i, comp.compGuidName);
        const auto component = [&] { return ComponentName(place, i); };
        classes.CheckRows(classRows, component, tally);
        CheckReferences(references, component);
        if (ZVSmartFormat::defaultRecordMemory - memory.Left() <= mostKept) {
            propertyMemory.swap(comp.compProperties);
        }
        ChargeRows(references, memory);
    });
    identities.Tell(
        place.filePosition, [&] { return place.Name(componentTable, 0); }, findings);
}

}  // namespace ZVSmartZvg
