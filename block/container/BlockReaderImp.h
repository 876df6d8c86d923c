#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ZVSmartFormat/CachedStream.h"
#include "ZVSmartZvg/BlockReader.h"
#include "component/FloorBlock.h"
#include "container/DecodedCache.h"
#include "container/LastMiss.h"
#include "container/WalkAhead.h"
#include "geometry/GeoIdentTable.h"
#include "layout/FileHead.h"
#include "layout/SectionLocator.h"
#include "stream/CompressedBlock.h"
#include "stream/WatchedInStream.h"

namespace ZVSmartZvg {

/// A geometry block, decoded.
struct GeoBlock {
    ZVSmartFormat::DecodedBlock block;
    Section records;
    u64 position = 0;  ///< of the block, from the file's base
};

/// A floor, decoded, and the same of its block.
struct PlacedFloor {
    FloorBlock floor;
    u64 position = 0;
};

constexpr LastMiss::Subject theHead{"the head"};
constexpr LastMiss::Subject theGeoSection{"the geometry block section"};
constexpr LastMiss::Subject theFloorSection{"the floor section"};
constexpr LastMiss::Subject theIndexBlock{"the index block"};

class CZVLGBlockReader::Imp {
  public:
    bool Init(ZVSmartFormat::CZVFTInStream& stream, u32 geoBlockCacheLimit, u32 floorCacheLimit);

    EZVLGMiss TellLastMiss(SZVLGBlockFinding& finding) const;
    bool TellStructure(SZVLGBlockFinding& finding) const;

    void SetReadAhead(unsigned int threads, bool geometry, const GeoBlockUse& use);
    u32 EstimatedDataSize();
    void CleanInnerBuffer();

    u32 FloorNum();
    /// The fields of floor `floor`; false where there is none.
    bool ReadFloor(u32 floor, FloorFields& fields);
    std::vector<std::wstring> AllFloorNames();
    u32 FloorCompNum(u32 floor);
    bool ReadComp(const SZVLGCompIndex& index, const SZVLGCompParts& parts, SZVLGZvgComp& comp);
    bool ReadView(const SZVLGCompIndex& index, const SZVLGCompParts& parts, SZVLGCompView& view);

    u32 GeoBlockNum();
    u32 GeoNumInBlock(u32 block);
    bool ReadGeo(const SZVLGZvgGeoIndex& index, SZVLGZvgGeo& geo);
    bool ReadGeo(const std::wstring& identification, SZVLGZvgGeo& geo);
    bool ReadPreview(SZVLGZvgGeoImage& image);
    u32 IdentificationNum();
    bool ReadIdentification(u32 i, std::wstring& identification, SZVLGZvgGeoIndex& index);

    u64 decodedLimit = 0xFFFFFFFF;
    u64 cacheBytes = 0;                                    // for files that are opened from now on
    u64 recordLimit = ZVSmartFormat::defaultRecordMemory;  // memory of the records of one call
    FileHead head;

  private:
    template <class Query>
    auto Ask(Query query);
    template <class Answer, class Query>
    Answer AskOpen(Answer neutral, Query query);
    void SettleMiss();
    void CheckCount(const Section& section);
    bool NoteBeyond(const Section& section);

    void Close();
    bool Open();
    bool ReadSections(ZVSmartFormat::CheckedInStream& in);
    bool ReadIndexBlock(ZVSmartFormat::CheckedInStream& in);
    void CheckStructure(ZVSmartFormat::CheckedInStream& in);
    void Expect(u64 position, u64 byteCount);
    void ExpectHead();
    void ExpectTable(const Section& section, u64 end);
    void ExpectRecord(ZVSmartFormat::CheckedInStream& in, const Section& section, u32 i,
                      u64 position, u64 ahead);
    template <class PassFields>
    bool IsFilled(ZVSmartFormat::CheckedInStream& in, const Section& section,
                  PassFields passFields);
    u32 SumDecodedSizes();
    bool ReadBlock(ZVSmartFormat::CheckedInStream& in, const LastMiss::Subject& subject,
                   ZVSmartFormat::DecodedBlock& block);
    /// Whether there is a `walk`.
    bool IsReadAhead() const { return ZVSmartFormat::hasThreads && walk != nullptr; }
    bool SeekFloor(ZVSmartFormat::CheckedInStream& in, u32 floor);
    bool SeekGeoBlock(ZVSmartFormat::CheckedInStream& in, u32 block);
    void LookAheadOfFloor(ZVSmartFormat::CheckedInStream& in, u32 floor);
    void LookAheadOfGeoBlock(ZVSmartFormat::CheckedInStream& in, u32 block);
    const GeoBlock* FetchGeoBlock(u32 block);
    const PlacedFloor* FetchFloor(u32 floor, ZVSmartFormat::MemoryBudget& memory);
    /// The floor of a component, which is looked at from now on; null where there is none.
    const FloorBlock* FetchFloorOf(const SZVLGCompIndex& index,
                                   ZVSmartFormat::MemoryBudget& memory);
    bool FetchComp(const SZVLGCompIndex& index, const SZVLGCompParts& parts, SZVLGZvgComp& comp);
    bool FetchView(const SZVLGCompIndex& index, const SZVLGCompParts& parts, SZVLGCompView& view);
    void KeepWithinBytes();
    const WantedProperties& Wanted(const SZVLGCompParts& parts);
    bool FetchGeo(const SZVLGZvgGeoIndex& index, SZVLGZvgGeo& geo);
    bool FetchGeo(const std::wstring& identification, SZVLGZvgGeo& geo);

    ZVSmartFormat::WatchedInStream stream;
    ZVSmartFormat::CZVFTCachedInStream* distant = nullptr;  // the same, where requests are dear
    u64 basePos = 0;
    bool isOpen = false;
    Section geoSection;
    Section floorSection;
    GeoIdentTable identifications;
    ZVSmartFormat::DecodedBlock indexBlock;
    u64 indexPosition = 0;  // from the base
    Section level2;         // in the index block
    DecodedCache<GeoBlock> geoBlocks;
    DecodedCache<PlacedFloor> floors;
    std::unique_ptr<WalkAhead> walk;  // null where nothing is decoded ahead
    u64 mostCached = 0;               // bytes of both together; 0 where they are limited by numbers
    u64 uses = 0;                     // of both
    std::wstring nameEnd;             // of the properties that were wanted last
    std::string storedNameEnd;        // the same
    WantedProperties wanted;          // which looks at it
    PropertyList propertyMemory;      // of a record that a query replaced, for the next one

    LastMiss last;
    LastMiss openMiss;  // of `Init`: the answer to every query while nothing is open
};

/// Runs a query and keeps what hides behind its answer or its exception.
template <class Query>
auto CZVLGBlockReader::Imp::Ask(Query query) {
    last.Clear();
    stream.ForgetFailure();
    try {
        auto answer = query();
        SettleMiss();
        return answer;
    } catch (...) {
        last.NoteException();
        SettleMiss();
        throw;
    }
}

/// The same where a file is open, else what `Init` met.
template <class Answer, class Query>
Answer CZVLGBlockReader::Imp::AskOpen(Answer neutral, Query query) {
    if (isOpen) return Ask(query);
    last = openMiss;
    return neutral;
}

}  // namespace ZVSmartZvg
