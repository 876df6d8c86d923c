#include "ZVSmartZvg/BlockSaver.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

#include "ZVSmartFormat/IniFile.h"
#include "ZVSmartLzma/LzmaTool.h"
#include "component/ClassTables.h"
#include "component/ComponentMemory.h"
#include "component/FloorTables.h"
#include "container/Seal.h"
#include "geometry/GeoBlockStore.h"
#include "geometry/GeoSerial.h"
#include "layout/FileHead.h"
#include "processing/IncludeRelations.h"
#include "stream/BlockQueue.h"
#include "stream/CheckedOutStream.h"
#include "stream/CompressedBlock.h"
#include "stream/OwnedBuffer.h"

// A file, in order:
//   head                      ends with floorSectionOffset, written last
//   geometry block section    a compressed block per record
//   floor section             a floor record per record
//   index block, compressed   the classification tables, then the identification table
//   seal                      only where it is asked for

namespace ZVSmartZvg {

using ZVSmartFormat::AllocBuffer;
using ZVSmartFormat::BlockQueue;
using ZVSmartFormat::CheckedOutStream;
using ZVSmartFormat::CZVFTAllocBufferOutStream;
using ZVSmartFormat::CZVFTIniFile;
using ZVSmartFormat::CZVFTOutStream;
using ZVSmartFormat::OwnedBuffer;

namespace {

/// A file under way, from `Init` on.
class BlockFile {
  public:
    BlockFile(CZVFTOutStream& stream, const FileHead& head, AllocBuffer& scratch, u32 geosPerBlock,
              unsigned int threads)
        : out(stream),
          blocks(out, threads),
          scratch(scratch),
          version(head.version),
          basePos(out.GetPos()),
          floorOffsetPos(WriteHead(head)),
          geos(out, blocks, scratch, head.version, geosPerBlock),
          floors(head.version),
          classes(head.version) {}

    GeoBlockStore& Geos() { return geos; }
    void AddComp(const SZVLGZvgComp& comp, const CZVFTIniFile& settings);
    void Finish();

  private:
    u64 WriteHead(const FileHead& head) {
        WriteFileHead(out, head);
        const u64 position = out.GetPos();
        ZVSmartSerial::CZVFTSerialWriter(&out).WriteU32(0);
        return position;
    }
    void WriteFloorOffset();
    void WriteIndexBlock();

    CheckedOutStream out;
    BlockQueue blocks;
    AllocBuffer& scratch;
    unsigned int version;
    u64 basePos;
    u64 floorOffsetPos;
    GeoBlockStore geos;
    FloorTables floors;
    ClassTables classes;
};

void BlockFile::AddComp(const SZVLGZvgComp& comp, const CZVFTIniFile& settings) {
    geos.CheckOpen();
    for (const SZVLGZvgCompGeoRef& reference : comp.geoRefs) CheckGeo(reference.geo, version);
    CheckComponentMemory(comp, floors, version);

    const u32 floor = floors.Enter(comp);
    const EntryRows rows = classes.Enter(comp, settings);
    if (floors.HasComponent(floor, comp)) return;
    for (const SZVLGZvgCompGeoRef& reference : comp.geoRefs) {
        const std::wstring& identification = reference.geoIdentification;
        if (identification.empty() || reference.geo.IsEmpty()) continue;
        if (!geos.Has(identification)) geos.Add(identification, reference.geo);
    }
    floors.AddComponent(floor, comp, rows);
}

void BlockFile::WriteFloorOffset() {
    const u64 here = out.GetPos();
    if (here - basePos > std::numeric_limits<u32>::max()) ZVSmartFormat::ThrowNotWritten();
    out.Seek(floorOffsetPos);
    ZVSmartSerial::CZVFTSerialWriter(&out).WriteU32(static_cast<u32>(here - basePos));
    out.Seek(here);
}

void BlockFile::WriteIndexBlock() {
    CZVFTAllocBufferOutStream index(&scratch);
    classes.Write(index);
    geos.WriteIdentifications(index);
    blocks.Write(scratch.data, index.GetPos());
}

void BlockFile::Finish() {
    geos.Finish();
    blocks.Do([this] { WriteFloorOffset(); });
    floors.Write(out, blocks, scratch);
    WriteIndexBlock();
    blocks.Finish();
}

}  // namespace

class CZVLGBlockSaver::Imp {
  public:
    explicit Imp(unsigned int version) : version(version) { Reset(); }

    /// Forgets the file under way and all that belongs to it.
    void Reset() {
        file.reset();
        sealing.reset();
        includes.emplace([this](const std::wstring& key, const SZVLGZvgGeo& geo) {
            File().Geos().Add(key, geo);
        });
        settings = CZVFTIniFile();
    }

    /// Gives the buffer the size in which nearly every block is built without growing it.
    void AllocateScratch() {
        constexpr std::size_t byteCount = 20 << 20;
        void* const data = std::realloc(scratch.data, byteCount);
        if (data == nullptr) ZVSmartFormat::ThrowNotGrown();
        scratch.data = static_cast<u8*>(data);
        scratch.capacity = byteCount;
    }

    /// The file; there is none before `Init`.
    BlockFile& File() {
        if (!file) ZVSmartFormat::ThrowNotWritten();
        return *file;
    }

    unsigned int version;
    bool isToBeSealed = false;
    unsigned int threads = 1;
    CZVFTIniFile settings;
    OwnedBuffer scratch;                      // serves every serialisation
    std::optional<SealingOutStream> sealing;  // what the file is written to, where it is sealed
    std::optional<BlockFile> file;
    std::optional<IncludeRelations> includes;
};

CZVLGBlockSaver::CZVLGBlockSaver(unsigned int version) : imp(std::make_unique<Imp>(version)) {}

CZVLGBlockSaver::~CZVLGBlockSaver() = default;

void CZVLGBlockSaver::Init(CZVFTOutStream* out, const SZVLGZvgBlockHeadInfo& head,
                           const std::string& iniPath, unsigned int geosPerBlock) {
    constexpr u32 geosPerBlockByDefault = 1000;
    imp->Reset();
    imp->settings.LoadFile(iniPath);
    imp->AllocateScratch();
    CZVFTOutStream& target = imp->isToBeSealed ? imp->sealing.emplace(*out) : *out;
    imp->file.emplace(target, FileHead{imp->version, head}, imp->scratch,
                      geosPerBlock == 0 ? geosPerBlockByDefault : geosPerBlock, imp->threads);
}

void CZVLGBlockSaver::SetSeal(bool seal) {
    imp->isToBeSealed = seal;
}

void CZVLGBlockSaver::SetThreads(unsigned int threads) {
    imp->threads = std::clamp(threads, 1U, ZVSmartFormat::mostCoders);
}

void CZVLGBlockSaver::SetDisplacementSettings(const CZVFTIniFile& settings) {
    imp->settings = settings;
}

void CZVLGBlockSaver::SetEncodeFastMod(bool fast) {
    ZVSmartLzma::CZVFTLzmaTool::SetEocodeFastMod(fast);
}

void CZVLGBlockSaver::AddIdentificationGeo(const std::wstring& identification,
                                           const SZVLGZvgGeo& geo) {
    imp->File().Geos().Add(identification, geo);
}

bool CZVLGBlockSaver::IsHaveIdentificationGeo(const std::wstring& identification) {
    return imp->file && imp->file->Geos().Has(identification);
}

bool CZVLGBlockSaver::AddPreviewImage(const SZVLGZvgGeoImage& image) {
    return imp->File().Geos().AddPreview(image);
}

void CZVLGBlockSaver::AddComp(const SZVLGZvgComp& comp) {
    imp->File().AddComp(comp, imp->settings);
}

std::wstring CZVLGBlockSaver::CreateIncludeBlockGeo(const SZVLGZvgGeo& geo) {
    return imp->includes->CreateIncludeBlockGeo(geo);
}

bool CZVLGBlockSaver::GetRelIncludeByCylinderFace(const SZVLGParamCylinderFace& face,
                                                  SZVLGZvgGeoRelInclude& rel) {
    return imp->includes->RelateCylinderFace(face, rel);
}

bool CZVLGBlockSaver::GetRelIncludeByRevolvedFace(const SZVLGParamRevolvedFace& face,
                                                  SZVLGZvgGeoRelInclude& rel) {
    return imp->includes->RelateRevolvedFace(face, rel);
}

bool CZVLGBlockSaver::GetRelIncludeByRuledFace(const SZVLGParamRuledFace& face,
                                               SZVLGZvgGeoRelInclude& rel) {
    return imp->includes->RelateRuledFace(face, rel);
}

void CZVLGBlockSaver::WriteEnd() {
    imp->File().Finish();
    if (imp->sealing) imp->sealing->WriteSeal();
}

}  // namespace ZVSmartZvg
