#include "component/FloorBlock.h"

#include <utility>

#include "stream/RecordInStream.h"

namespace ZVSmartZvg {

using ZVSmartFormat::CheckedInStream;
using ZVSmartFormat::DecodedBlock;
using ZVSmartFormat::MemoryBudget;
using ZVSmartFormat::RecordInStream;
using ZVSmartSerial::FieldReader;

FloorFields ReadFloorFields(CheckedInStream& in) {
    MemoryBudget budget;
    return ReadFloorFields(in, budget);
}

FloorFields ReadFloorFields(CheckedInStream& in, MemoryBudget& budget) {
    FieldReader<CheckedInStream> reader(in, budget);
    FloorFields fields;
    VisitFloorFields(reader, fields);
    return fields;
}

FloorBlock::FloorBlock(FloorFields fields, DecodedBlock decoded)
    : fields(std::move(fields)), block(std::move(decoded)) {
    RecordInStream in(block.Data(), block.Size());
    components = ReadSection(in, 0);
    geoIds = ReadSection(in, components.End());
}

bool FloorBlock::ReadComponent(u32 i, unsigned int version, SZVLGZvgComp& comp, EntryRows& rows,
                               MemoryBudget& budget) const {
    RecordInStream in(block.Data(), block.Size());
    FieldReader<RecordInStream> reader(in, budget);
    SeekRecord(in, components, i);
    ReferenceRows referenceRows;
    VisitComponentEntry(reader, comp, rows, referenceRows, version);

    // A few bytes of row numbers could name one long row over and over: the budget ends that.
    bool hasAllRows = true;
    for (std::size_t r = 0; r < comp.geoRefs.size(); ++r) {
        std::vector<SZVLGZvgGeoId>& geoRows = comp.geoRefs[r].geoIds;
        reader.Charge(referenceRows[r].size(), sizeof(SZVLGZvgGeoId));
        geoRows.reserve(referenceRows[r].size());
        for (const u32 number : referenceRows[r]) {
            if (number >= geoIds.Count()) {
                hasAllRows = hasAllRows && number == ZVLG_NONE;
                continue;
            }
            SeekRecord(in, geoIds, number);
            VisitGeoIdRow(reader, geoRows.emplace_back());
        }
    }
    reader.ChargeText(fields.classLevel1Name);
    comp.classLevel1Name = fields.classLevel1Name;
    comp.classLevel1Id = fields.classLevel1Id;
    comp.classLevel1DataA = fields.classLevel1DataA;
    comp.classLevel1DataB = fields.classLevel1DataB;
    return hasAllRows;
}

}  // namespace ZVSmartZvg
