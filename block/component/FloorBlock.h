#pragma once

#include <string>

#include "ZVSmartFormat/Stream.h"
#include "ZVSmartZvg/Comp.h"
#include "component/ComponentFields.h"
#include "component/EntryReader.h"
#include "layout/SectionLocator.h"
#include "stream/CheckedInStream.h"
#include "stream/CompressedBlock.h"
#include "stream/MemoryBudget.h"

namespace ZVSmartZvg {

/// What a floor record says ahead of its block.
struct FloorFields {
    std::wstring classLevel1Name;
    u32 classLevel1Id = ZVLG_NONE;
    u64 classLevel1DataA = 0;
    u64 classLevel1DataB = 0;
};

/// Reads the fields at `in`'s position and leaves it at the block.
/// @{
FloorFields ReadFloorFields(ZVSmartFormat::CheckedInStream& in);
FloorFields ReadFloorFields(ZVSmartFormat::CheckedInStream& in,
                            ZVSmartFormat::MemoryBudget& budget);
/// @}

/// A floor of an open file, decoded.
class FloorBlock {
  public:
    /// Takes a decoded block. Throws "seek over buffer size" where its two sections are not there.
    FloorBlock(FloorFields fields, ZVSmartFormat::DecodedBlock block);

    u32 ComponentCount() const { return components.Count(); }

    /// Reads component `i`, below the count: the floor's fields, the entry's own fields and the
    /// identification rows of its references, into a record that is new but for `compProperties`,
    /// whose memory is used again; of the properties those that are wanted. `rows` tells where
    /// the classes are. False where a reference names an identification row that is not there; it
    /// is left out.
    /// Throws OverLimit where `budget` does not hold what the record takes.
    bool ReadComponent(u32 i, unsigned int version, const WantedProperties& wanted,
                       SZVLGZvgComp& comp, EntryRows& rows,
                       ZVSmartFormat::MemoryBudget& budget) const;
    /// The same as views of this block, which must outlive them. Whatever is thrown, `byteCount` of
    /// `view` is right, and nothing else.
    bool ReadView(u32 i, unsigned int version, const WantedProperties& wanted, SZVLGCompView& view,
                  ZVSmartFormat::MemoryBudget& budget) const;

    const ZVSmartFormat::DecodedBlock& Block() const { return block; }
    const Section& Components() const { return components; }
    const Section& GeoIds() const { return geoIds; }

  private:
    template <class Numbers, class Visit>
    bool ForEachGeoId(ZVSmartFormat::RecordInStream& in, const Numbers& numbers, Visit visit) const;

    FloorFields fields;
    ZVSmartFormat::DecodedBlock block;
    Section components;
    Section geoIds;
};

}  // namespace ZVSmartZvg
