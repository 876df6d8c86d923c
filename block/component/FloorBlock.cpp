#include "component/FloorBlock.h"

#include <cstring>
#include <utility>

#include "stream/RecordInStream.h"
#include "stream/WideText.h"

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

namespace {

/// Reads a component's entry, of its properties those that are wanted.
class EntryReader : public FieldReader<RecordInStream> {
  public:
    EntryReader(RecordInStream& in, MemoryBudget& budget, const SZVLGCompParts& parts)
        : FieldReader(in, budget), in(in), parts(parts) {
        ZVSmartFormat::AppendUtf16(parts.propertyNameEnd, nameEnd);
    }

    void OwnProperties(PropertyList& properties) {
        if (parts.properties && nameEnd.empty()) return VisitProperties(*this, properties);
        std::size_t kept = 0;
        bool isBehindWanted = false;
        for (u32 left = Count(8); left != 0; --left) {
            const u64 position = in.GetPos();
            const bool isWanted = PassText() && parts.properties;
            if (isWanted || isBehindWanted) {
                in.Seek(position);
                Charge(1, sizeof(PropertyList::value_type));
                if (kept == properties.size()) properties.emplace_back();
                auto& [name, value] = properties[kept++];
                Text(name);
                Text(value);
            } else {
                PassText();
            }
            isBehindWanted = isWanted;
        }
        properties.resize(kept);
    }

  private:
    /// Whether the text that is passed ends as names are to.
    bool PassText() {
        const u64 byteCount = 2 * u64{Count(2)};
        const u8* const bytes = in.Take(byteCount);
        return !nameEnd.empty() && byteCount >= nameEnd.size() &&
               std::memcmp(bytes + byteCount - nameEnd.size(), nameEnd.data(), nameEnd.size()) == 0;
    }

    RecordInStream& in;
    const SZVLGCompParts& parts;
    std::string nameEnd;  // as it is stored
};

}  // namespace

bool FloorBlock::ReadComponent(u32 i, unsigned int version, const SZVLGCompParts& parts,
                               SZVLGZvgComp& comp, EntryRows& rows, MemoryBudget& budget) const {
    RecordInStream in(block.Data(), block.Size());
    EntryReader reader(in, budget, parts);
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
