#include "ZVSmartZvg/BlockVerifier.h"

#include <algorithm>
#include <limits>
#include <optional>

#include "component/FloorBlock.h"
#include "container/BlocksAhead.h"
#include "container/ClassCheck.h"
#include "container/FloorCheck.h"
#include "container/GeoCheck.h"
#include "container/IdentityCheck.h"
#include "container/Seal.h"
#include "container/SectionCheck.h"
#include "geometry/GeoIdentTable.h"
#include "geometry/GeoSerial.h"
#include "layout/FileHead.h"
#include "stream/BoundedInStream.h"
#include "stream/CheckedInStream.h"
#include "stream/CompressedBlock.h"
#include "stream/PositionGuard.h"
#include "stream/RecordInStream.h"
#include "stream/WatchedInStream.h"

namespace ZVSmartZvg {

using ZVSmartFormat::CheckedInStream;
using ZVSmartFormat::CZVFTInStream;
using ZVSmartFormat::CZVFTStreamException;
using ZVSmartFormat::DecodedBlock;
using ZVSmartFormat::RecordInStream;

namespace {

constexpr u64 wholeStream = std::numeric_limits<u64>::max();

/// A geometry block, and what is told of it.
struct GeoBlockState {
    u32 count = 0;
    bool isDecoded = false;
    std::optional<std::size_t> finding;
    u64 lostIdentifications = 0;  // those that lead to what the finding tells of
};

class Verification {
  public:
    Verification(CZVFTInStream& stream, unsigned int threads, Findings& findings)
        : stream(stream),
          in(stream),
          basePos(stream.GetPos()),
          findings(findings),
          blocks(threads) {}

    /// In the file's order, but for the index block, whose tables the floors refer to.
    void Run();

    const SZVLGBlockCounts& Counts() const { return counts; }

  private:
    unsigned long long FilePosition(u64 position) const { return position - basePos; }
    Place FilePlace() const { return {0, "", basePos}; }

    bool ReadBlock(const std::string& what, DecodedBlock& block);
    template <class CheckContent>
    void CheckBlock(const std::string& what, DecodedBlock& block, CheckContent checkContent);

    void CheckGeoBlocks();
    void CheckGeoRecord(RecordInStream& content) const;
    u64 FloorsBegin(u64 byHead);
    u64 IndexBegin(const SZVLGSectionHead& floors, u64 floorsBegin);
    bool IsSectionAt(u64 position);
    void CheckIndexBlock();
    void CheckIdentifications(const Place& place);
    void CheckIdentification(u32 i, const SZVLGZvgGeoIndex& geo, Tally& tally);
    void TellLostIdentifications();
    void CheckFloors(u64 floorsBegin);
    void CheckEnd(u64 end);

    CZVFTInStream& stream;
    CheckedInStream in;
    u64 basePos;
    Findings& findings;
    BlocksAhead blocks;
    SZVLGBlockCounts counts;
    FileHead head;
    std::optional<std::size_t> geoSectionFinding;
    u64 lostWithSection = 0;  // identifications into blocks that its finding hides
    std::vector<GeoBlockState> geoBlocks;
    DecodedBlock indexBlock;
    std::optional<ClassCheck> classes;
    std::optional<GeoIdentTable> identifications;
    std::size_t contentFindings = 0;  // those inside blocks, whose bytes are as they were written
};

void Verification::Run() {
    const auto theHead = [] { return std::string("the head"); };
    u64 byHead = 0;
    const bool hasHead = findings.Guard(0, theHead, [&] {
        ReadFileHead(stream, head);
        byHead = basePos + ZVSmartFormat::LoadBigEndian<u32>(in.Take(4));
    });
    if (!hasHead) return;
    classes.emplace(head.version, findings);
    CheckGeoBlocks();
    const u64 floorsBegin = FloorsBegin(byHead);
    in.Seek(floorsBegin);
    SZVLGSectionHead floors;
    ZVSmartSerial::FieldReader<CheckedInStream> reader(in);
    VisitSectionHead(reader, floors);
    u64 end = 0;
    if (floors.IsPossible(in.GetSize() - floorsBegin)) {
        in.Seek(IndexBegin(floors, floorsBegin));
        const auto theIndex = [] { return std::string("the index block"); };
        if (findings.Guard(FilePosition(in.GetPos()), theIndex, [&] { CheckIndexBlock(); }))
            end = in.GetPos();
    }
    TellLostIdentifications();
    CheckFloors(floorsBegin);
    if (end != 0) CheckEnd(end);
}

/// Decodes the block at the stream's position. False where it is not certain where it ends. Throws
/// Findings::AlreadyFound where it does not decode.
bool Verification::ReadBlock(const std::string& what, DecodedBlock& block) {
    const u64 position = in.GetPos();
    const ZVSmartFormat::BlockFrame frame = ZVSmartFormat::ReadBlockFrame(in);
    if (!blocks.Read(in, block)) {
        findings.Add(FilePosition(position), what + " does not decode");
        throw Findings::AlreadyFound();
    }
    if (frame.blockSize == frame.encodedSize + 4) return true;
    findings.Add(FilePosition(position + 4 + frame.encodedSize),
                 what + ": bytes behind the compressed data");
    return false;
}

/// Decodes the block at the stream's position and checks what is in it, to its last byte.
template <class CheckContent>
void Verification::CheckBlock(const std::string& what, DecodedBlock& block,
                              CheckContent checkContent) {
    const Place place{FilePosition(in.GetPos()), what, 0};
    const bool isEndCertain = ReadBlock(what, block);
    const std::size_t before = findings.Count();
    RecordInStream content(block.Data(), block.Size());
    const auto name = [&] { return what; };
    const bool isWhole =
        findings.Guard(place.filePosition, name, [&] { checkContent(content, place); });
    if (isWhole && content.BytesLeft() != 0)
        findings.Add(place.filePosition,
                     what + ": " + std::to_string(content.BytesLeft()) + " bytes left over");
    contentFindings += findings.Count() - before;
    if (!isEndCertain) throw Findings::AlreadyFound();
}

void Verification::CheckGeoBlocks() {
    constexpr const char* name = "geometry block section";
    if (!IsSectionAt(in.GetPos())) geoSectionFinding = findings.Count();
    blocks.Begin([](CheckedInStream&) {});  // one behind the other
    const auto check = [&](u32 i) {
        if (geoBlocks.size() <= i) geoBlocks.resize(std::size_t{i} + 1);
        GeoBlockState& state = geoBlocks[i];
        const std::size_t before = findings.Count();
        const auto blockName = [i] { return "geometry block " + std::to_string(i); };
        const auto checkRecords = [&](RecordInStream& content, const Place& place) {
            state.isDecoded = true;
            const auto visit = [&](u32) { CheckGeoRecord(content); };
            state.count = CheckSection(content, place, "records", findings, visit).Count();
            counts.geometries += state.count;
        };
        DecodedBlock block;
        const bool isRead = findings.Guard(FilePosition(in.GetPos()), blockName,
                                           [&] { CheckBlock(blockName(), block, checkRecords); });
        if (findings.Count() != before) state.finding = before;
        if (!isRead) throw Findings::AlreadyFound();
    };
    findings.Guard(
        FilePosition(in.GetPos()), [] { return std::string(name); },
        [&] {
            counts.geometryBlocks = CheckSection(in, FilePlace(), name, findings, check).Count();
        });
}

void Verification::CheckGeoRecord(RecordInStream& content) const {
    const u32 byteCount = ZVSmartFormat::LoadBigEndian<u32>(content.Take(4));
    RecordInStream record(content.Take(byteCount), byteCount);
    SZVLGZvgGeo geo;
    ReadGeo(record, geo, head.version);
    if (record.BytesLeft() != 0) throw CZVFTStreamException("bytes left over");
    const std::string fault = FaultOf(geo);
    if (!fault.empty()) throw CZVFTStreamException(fault.c_str());
}

bool Verification::IsSectionAt(u64 position) {
    if (position > in.GetSize() || in.GetSize() - position < SZVLGSectionHead::byteSize)
        return false;
    const ZVSmartFormat::PositionGuard guard(in);
    in.Seek(position);
    ZVSmartSerial::FieldReader<CheckedInStream> reader(in);
    SZVLGSectionHead stored;
    VisitSectionHead(reader, stored);
    return FaultOf(stored, in.GetSize() - position) == nullptr;
}

/// Where the floor section begins: the head tells it, and so do the geometry blocks, behind which
/// the stream is. If they disagree one of them is damaged, and what looks like a section counts.
u64 Verification::FloorsBegin(u64 byHead) {
    const u64 behindGeos = in.GetPos();
    if (byHead == behindGeos) return byHead;
    if (geoSectionFinding) return byHead;
    findings.Add(FilePosition(behindGeos),
                 "the floor section does not begin where the geometry blocks end");
    return IsSectionAt(behindGeos) ? behindGeos : byHead;
}

/// Where the index block begins, by the total size of the floors or, if no block is there, by
/// their count.
u64 Verification::IndexBegin(const SZVLGSectionHead& floors, u64 floorsBegin) {
    const u64 bySize = floorsBegin + floors.totalSize;
    const u64 byCount = floorsBegin + floors.tableOffset + u64{floors.count} * floors.EntryWidth();
    if (bySize == byCount || byCount > in.GetSize()) return bySize;
    in.Seek(bySize);
    return ZVSmartFormat::ReadBlockFrame(in).encodedSize != 0 ? bySize : byCount;
}

void Verification::CheckIndexBlock() {
    blocks.Begin([](CheckedInStream&) { ZVSmartFormat::ThrowOutOfData(); });  // it stands alone
    CheckBlock("the index block", indexBlock, [&](RecordInStream& content, const Place& place) {
        classes->Read(content, place);
        identifications.emplace(content);
        CheckIdentifications(place);
        counts.identifications = identifications->Count();
    });
}

void Verification::CheckIdentifications(const Place& place) {
    if (!identifications->WasInOrder())
        findings.Add(place.filePosition, "the identifications are not in ascending order");
    Tally tally;
    std::wstring identification;
    for (u32 i = 0; i < identifications->Count(); ++i) {
        SZVLGZvgGeoIndex geo;
        identifications->Get(i, identification, geo);
        CheckIdentification(i, geo, tally);
    }
    tally.Tell(place.filePosition, findings);
}

/// One that leads to what a finding tells of hangs on that.
void Verification::CheckIdentification(u32 i, const SZVLGZvgGeoIndex& geo, Tally& tally) {
    if (geo.blockIndex < geoBlocks.size()) {
        GeoBlockState& state = geoBlocks[geo.blockIndex];
        if (state.isDecoded && geo.indexInBlock < state.count) return;
        if (state.finding) {
            ++state.lostIdentifications;
            return;
        }
    } else if (geoSectionFinding) {
        ++lostWithSection;
        return;
    }
    tally.Meet("identification",
               [i] { return "identification " + std::to_string(i) + " leads to no geometry"; });
}

void Verification::TellLostIdentifications() {
    const auto tell = [&](std::optional<std::size_t> finding, u64 count, const char* whither) {
        if (!finding || count == 0) return;
        findings.AppendTo(*finding,
                          "; " + std::to_string(count) +
                              (count == 1 ? " identification leads " : " identifications lead ") +
                              whither);
    };
    for (const GeoBlockState& state : geoBlocks)
        tell(state.finding, state.lostIdentifications, "into it");
    tell(geoSectionFinding, lostWithSection, "to blocks that are not there");
}

void Verification::CheckFloors(u64 floorsBegin) {
    in.Seek(floorsBegin);
    constexpr const char* name = "floor section";
    blocks.Begin([](CheckedInStream& behindFloor) { ReadFloorFields(behindFloor); });
    Identities names;
    const auto checkFloor = [&](u32 i) {
        const FloorFields fields = ReadFloorFields(in);
        const std::wstring& floor = fields.classLevel1Name;
        names.Meet(i, floor.empty() ? std::wstring(L"none") : floor);
        DecodedBlock block;
        FloorCheck check(head.version, *classes, identifications ? &*identifications : nullptr,
                         findings);
        CheckBlock("floor " + std::to_string(i), block,
                   [&](RecordInStream& content, const Place& place) {
                       counts.components += check.Run(content, place);
                   });
    };
    counts.floors = CheckSection(in, FilePlace(), name, findings, checkFloor).Count();
    names.Tell(
        FilePosition(floorsBegin), [] { return std::string(name); }, findings);
}

/// What is behind the index block: nothing, or a seal. Its checksum is asked where nothing else
/// tells of changed bytes.
void Verification::CheckEnd(u64 end) {
    const u64 bytesLeft = in.GetSize() - end;
    if (bytesLeft == 0) return;
    in.Seek(end);
    const Seal seal = bytesLeft == sealBytes ? ReadSeal(in) : Seal();
    if (!seal.isThere) {
        findings.Add(FilePosition(end),
                     std::to_string(bytesLeft) + " bytes behind the end of the file");
    } else if (seal.length != FilePosition(end)) {
        findings.Add(FilePosition(end), "the seal is for " + std::to_string(seal.length) +
                                            " bytes, the file has " +
                                            std::to_string(FilePosition(end)));
    } else if (findings.Count() <= contentFindings) {
        in.Seek(basePos);
        if (CrcOf(in, FilePosition(end)) != seal.crc)
            findings.Add(FilePosition(end),
                         "the seal does not match: bytes of the file, or of "
                         "the seal itself, have changed");
    }
}

void VerifyStream(CZVFTInStream& stream, unsigned int threads, Findings& findings,
                  SZVLGBlockCounts& counts) {
    const auto theFile = [] { return std::string("the file"); };
    try {
        findings.Guard(0, theFile, [&] {
            Verification verification(stream, threads, findings);
            verification.Run();
            counts = verification.Counts();
        });
    } catch (const Findings::Full&) {  // as many as are reported
    }
}

/// A file whose last bytes are missing is damaged whatever they were.
void TellShortage(u64 bytesThere, u64 byteCount, Findings& findings) {
    if (byteCount == wholeStream || byteCount <= bytesThere || findings.Count() != 0) return;
    findings.Add(bytesThere,
                 std::to_string(byteCount - bytesThere) + " bytes of the file are not there");
}

}  // namespace

bool CZVLGBlockVerifier::Verify(CZVFTInStream* in, std::vector<SZVLGBlockFinding>& findings) {
    return Verify(in, wholeStream, findings);
}

bool CZVLGBlockVerifier::Verify(CZVFTInStream* in, unsigned long long byteCount,
                                std::vector<SZVLGBlockFinding>& findings) {
    return Verify(in, byteCount, findings, 1);
}

bool CZVLGBlockVerifier::Verify(CZVFTInStream* in, unsigned long long byteCount,
                                std::vector<SZVLGBlockFinding>& findings, unsigned int threads,
                                SZVLGBlockCounts* counts) {
    SZVLGBlockCounts counted;
    Findings gathered(findings);
    const ZVSmartFormat::PositionGuard guard(*in);
    ZVSmartFormat::BoundedInStream bounded(*in, byteCount);
    const u64 bytesThere = bounded.GetSize() - std::min(bounded.GetSize(), in->GetPos());
    ZVSmartFormat::WatchedInStream watched;
    watched.Watch(&bounded);
    try {
        VerifyStream(watched, std::min(threads, ZVSmartFormat::mostCoders), gathered, counted);
    } catch (const CZVFTStreamException&) {
        if (!watched.HasFailed()) throw;  // memory ran out
    }
    // What the disk kept back looks like damage and is none.
    if (watched.HasFailed()) ZVSmartFormat::ThrowOutOfData();
    TellShortage(bytesThere, byteCount, gathered);
    if (counts != nullptr) *counts = counted;
    return findings.empty();
}

}  // namespace ZVSmartZvg
