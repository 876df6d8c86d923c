#include "component/FloorBlock.h"

#include <utility>

#include "stream/RecordInStream.h"

namespace ZVSmartZvg {

using ZVSmartFormat::CheckedInStream;
using ZVSmartFormat::DecodedBlock;
using ZVSmartFormat::RecordInStream;
using ZVSmartSerial::FieldReader;

namespace {

/// The most that the identification rows of one component may come to, in stored bytes.
constexpr u64 rowBudget = 64ULL << 20;
constexpr u64 rowBudgetPerByte = 16;

}  // namespace

FloorFields ReadFloorFields(CheckedInStream& in) {
    FieldReader<CheckedInStream> reader(in);
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

bool FloorBlock::ReadComponent(u32 i, unsigned int version, SZVLGZvgComp& comp,
                               EntryRows& rows) const {
    RecordInStream in(block.Data(), block.Size());
    FieldReader<RecordInStream> reader(in);
    SeekRecord(in, components, i);
    ReferenceRows referenceRows;
    VisitComponentEntry(reader, comp, rows, referenceRows, version);

    // A few bytes of row numbers could name one long row over and over.
    bool hasAllRows = true;
    u64 budget = rowBudget + rowBudgetPerByte * block.Size();
    for (std::size_t r = 0; r < comp.geoRefs.size(); ++r) {
        for (const u32 number : referenceRows[r]) {
            if (number >= geoIds.Count()) {
                hasAllRows = hasAllRows && number == ZVLG_NONE;
                continue;
            }
            SeekRecord(in, geoIds, number);
            const u64 start = in.GetPos();
            reader.Charge(1, sizeof(SZVLGZvgGeoId));
            VisitGeoIdRow(reader, comp.geoRefs[r].geoIds.emplace_back());
            const u64 byteCount = in.GetPos() - start;
            if (byteCount > budget) ZVSmartFormat::ThrowOutOfData();
            budget -= byteCount;
        }
    }
    comp.classLevel1Name = fields.classLevel1Name;
    comp.classLevel1Id = fields.classLevel1Id;
    comp.classLevel1DataA = fields.classLevel1DataA;
    comp.classLevel1DataB = fields.classLevel1DataB;
    return hasAllRows;
}

}  // namespace ZVSmartZvg
