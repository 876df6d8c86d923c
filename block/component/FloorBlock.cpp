#include "component/FloorBlock.h"

#include <utility>
#include <vector>

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

/// Calls `visit` at each of the identification rows of these numbers. False where one is not there.
template <class Numbers, class Visit>
bool FloorBlock::ForEachGeoId(RecordInStream& in, const Numbers& numbers, Visit visit) const {
    bool areThere = true;
    for (const u32 number : numbers) {
        if (number >= geoIds.Count()) {
            areThere = areThere && number == ZVLG_NONE;
            continue;
        }
        SeekRecord(in, geoIds, number);
        visit();
    }
    return areThere;
}

bool FloorBlock::ReadComponent(u32 i, unsigned int version, const WantedProperties& wanted,
                               SZVLGZvgComp& comp, EntryRows& rows, MemoryBudget& budget) const {
    RecordInStream in(block.Data(), block.Size());
    EntryReader reader(in, budget, wanted);
    SeekRecord(in, components, i);
    ReferenceRows referenceRows;
    VisitComponentEntry(reader, comp, rows, referenceRows, version);

    // A few bytes of row numbers could name one long row over and over: the budget ends that.
    bool hasAllRows = true;
    for (std::size_t r = 0; r < comp.geoRefs.size(); ++r) {
        std::vector<SZVLGZvgGeoId>& geoRows = comp.geoRefs[r].geoIds;
        reader.Charge(referenceRows[r].size(), sizeof(SZVLGZvgGeoId));
        geoRows.reserve(referenceRows[r].size());
        const bool areThere = ForEachGeoId(in, referenceRows[r],
                                           [&] { VisitGeoIdRow(reader, geoRows.emplace_back()); });
        hasAllRows = hasAllRows && areThere;
    }
    reader.ChargeText(fields.classLevel1Name);
    comp.classLevel1Name = fields.classLevel1Name;
    comp.classLevel1Id = fields.classLevel1Id;
    comp.classLevel1DataA = fields.classLevel1DataA;
    comp.classLevel1DataB = fields.classLevel1DataB;
    return hasAllRows;
}

namespace {

/// Makes a view as new; its lists keep their memory.
void Empty(SZVLGCompView& view) {
    view.compGuidName = view.groupGuidName = SZVLGKeyView();
    view.rows = SZVLGCompRows();
    view.compProperties = SZVLGViewRange();
    view.relatedGuidNames.clear();
    view.geoRefs.clear();
    view.properties.clear();
    view.materials.clear();
    view.geoIds.clear();
    if (view.compAttr.flags != 0 || view.compAttr.flags2 != 0) view.compAttr = {};
    view.byteCount = 0;
}

/// Adds to a sum the bytes that are passed as long as this object lives, however that ends.
class PassedBytes {
  public:
    PassedBytes(RecordInStream& in, u64& sum) : in(in), sum(sum), start(in.GetPos()) {}
    ~PassedBytes() { sum += in.GetPos() - start; }
    PassedBytes(const PassedBytes&) = delete;
    PassedBytes& operator=(const PassedBytes&) = delete;

  private:
    RecordInStream& in;
    u64& sum;
    u64 start;
};

}  // namespace

bool FloorBlock::ReadView(u32 i, unsigned int version, const WantedProperties& wanted,
                          SZVLGCompView& view, MemoryBudget& budget) const {
    Empty(view);
    RecordInStream in(block.Data(), block.Size());
    ViewReader reader(in, budget, wanted, view);
    SeekRecord(in, components, i);
    std::vector<NumbersView> referenceRows;
    {
        const PassedBytes passed(in, view.byteCount);
        VisitComponentEntry(reader, view, view.rows, referenceRows, version);
    }
    bool hasAllRows = true;
    for (std::size_t r = 0; r < view.geoRefs.size(); ++r) {
        SZVLGViewRange& range = view.geoRefs[r].geoIds;
        reader.Charge(referenceRows[r].count, sizeof(SZVLGGeoIdView));
        range.first = static_cast<u32>(view.geoIds.size());
        const bool areThere = ForEachGeoId(in, referenceRows[r], [&] {
            const PassedBytes passed(in, view.byteCount);
            VisitGeoIdRow(reader, view.geoIds.emplace_back());
        });
        range.count = static_cast<u32>(view.geoIds.size()) - range.first;
        hasAllRows = hasAllRows && areThere;
    }
    return hasAllRows;
}

}  // namespace ZVSmartZvg
