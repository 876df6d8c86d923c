#pragma once

#include <string>
#include <vector>

#include "ZVSmartZvg/BlockReader.h"
#include "component/FloorBlock.h"
#include "container/DecodedCache.h"
#include "geometry/GeoIdentTable.h"
#include "layout/FileHead.h"
#include "layout/SectionLocator.h"
#include "stream/CompressedBlock.h"

namespace ZVSmartZvg {

/// A geometry block, decoded.
struct GeoBlock {
    ZVSmartFormat::DecodedBlock block;
    Section records;
};

class CZVLGBlockReader::Imp {
  public:
    bool Init(ZVSmartFormat::CZVFTInStream& stream, u32 geoBlockCacheLimit, u32 floorCacheLimit);

    u32 EstimatedDataSize();
    void CleanInnerBuffer();

    /// The fields of floor `floor`; false where there is none.
    bool ReadFloor(u32 floor, FloorFields& fields);
    std::vector<std::wstring> AllFloorNames();
    u32 FloorCompNum(u32 floor);
    bool ReadComp(const SZVLGCompIndex& index, SZVLGZvgComp& comp);

    u32 GeoNumInBlock(u32 block);
    bool ReadGeo(const SZVLGZvgGeoIndex& index, SZVLGZvgGeo& geo);
    bool ReadGeo(const std::wstring& identification, SZVLGZvgGeo& geo);

    u64 decodedLimit = 0xFFFFFFFF;
    FileHead head;
    Section geoSection;
    Section floorSection;
    GeoIdentTable identifications;

  private:
    bool ReadSections(ZVSmartFormat::CheckedInStream& in, u64 basePos);
    bool ReadIndexBlock(ZVSmartFormat::CZVFTInStream& stream);
    const GeoBlock* FetchGeoBlock(u32 block);
    const FloorBlock* FetchFloor(u32 floor);

    ZVSmartFormat::CZVFTInStream* stream = nullptr;  // null unless open
    ZVSmartFormat::DecodedBlock indexBlock;
    Section level2;  // in the index block
    DecodedCache<GeoBlock> geoBlocks{3};
    DecodedCache<FloorBlock> floors{5};
    PropertyList spareProperties;  // a list that a caller is done with, for the next component
};

}  // namespace ZVSmartZvg
