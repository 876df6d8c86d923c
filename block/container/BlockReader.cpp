#include "ZVSmartZvg/BlockReader.h"

#include <algorithm>
#include <limits>

#include "container/BlockReaderImp.h"

namespace ZVSmartZvg {

CZVLGBlockReader::CZVLGBlockReader() : imp(std::make_unique<Imp>()) {}

CZVLGBlockReader::~CZVLGBlockReader() = default;

void CZVLGBlockReader::SetDecodedBlockLimit(unsigned long long bytes) {
    imp->decodedLimit = imp->recordLimit =
        std::min<unsigned long long>(bytes, std::numeric_limits<u32>::max());
}

void CZVLGBlockReader::SetCacheBytes(unsigned long long bytes) {
    imp->cacheBytes = bytes;
}

void CZVLGBlockReader::SetReadAhead(unsigned int threads, bool geometry) {
    imp->SetReadAhead(threads, geometry, nullptr);
}

void CZVLGBlockReader::SetGeoReadAhead(unsigned int threads, const GeoBlockUse& use) {
    imp->SetReadAhead(threads, true, use);
}

bool CZVLGBlockReader::Init(ZVSmartFormat::CZVFTInStream* in, unsigned int geoBlockCacheLimit,
                            unsigned int floorCacheLimit) {
    return imp->Init(*in, geoBlockCacheLimit, floorCacheLimit);
}

EZVLGMiss CZVLGBlockReader::GetLastMiss(SZVLGBlockFinding& finding) {
    return imp->TellLastMiss(finding);
}

bool CZVLGBlockReader::GetStructureFinding(SZVLGBlockFinding& finding) {
    return imp->TellStructure(finding);
}

unsigned int CZVLGBlockReader::GetVersion() {
    return imp->head.version;
}

void CZVLGBlockReader::GetHeadInfo(SZVLGZvgBlockHeadInfo& head) {
    head = imp->head.info;
}

unsigned int CZVLGBlockReader::GetEstimatedDataSize() {
    return imp->EstimatedDataSize();
}

void CZVLGBlockReader::CleanInnerBuffer() {
    imp->CleanInnerBuffer();
}

unsigned int CZVLGBlockReader::GetFloorNum() {
    return imp->FloorNum();
}

unsigned int CZVLGBlockReader::GetFloorCompNum(unsigned int floor) {
    return imp->FloorCompNum(floor);
}

std::wstring CZVLGBlockReader::GetFloorNameByIndex(unsigned int floor) {
    FloorFields fields;
    imp->ReadFloor(floor, fields);
    return fields.classLevel1Name;
}

unsigned int CZVLGBlockReader::GetFloorOrderByIndex(unsigned int floor) {
    FloorFields fields;
    return imp->ReadFloor(floor, fields) ? fields.classLevel1Id : ZVLG_NONE;
}

bool CZVLGBlockReader::GetFloorDataByIndex(unsigned int floor, unsigned long long& dataA,
                                           unsigned long long& dataB) {
    FloorFields fields;
    if (!imp->ReadFloor(floor, fields)) return false;
    dataA = fields.classLevel1DataA;
    dataB = fields.classLevel1DataB;
    return true;
}

void CZVLGBlockReader::GetAllFloorName(std::vector<std::wstring>& names) {
    names = imp->AllFloorNames();
}

bool CZVLGBlockReader::GetCompByIndex(const SZVLGCompIndex& index, SZVLGZvgComp& comp) {
    return imp->ReadComp(index, SZVLGCompParts(), comp);
}

bool CZVLGBlockReader::GetCompPartsByIndex(const SZVLGCompIndex& index, const SZVLGCompParts& parts,
                                           SZVLGZvgComp& comp) {
    return imp->ReadComp(index, parts, comp);
}

bool CZVLGBlockReader::GetCompViewByIndex(const SZVLGCompIndex& index, const SZVLGCompParts& parts,
                                          SZVLGCompView& view) {
    return imp->ReadView(index, parts, view);
}

bool CZVLGBlockReader::GetGeoByIdentification(const std::wstring& identification,
                                              SZVLGZvgGeo& geo) {
    return imp->ReadGeo(identification, geo);
}

bool CZVLGBlockReader::GetGeoByIndex(const SZVLGZvgGeoIndex& index, SZVLGZvgGeo& geo) {
    return imp->ReadGeo(index, geo);
}

bool CZVLGBlockReader::GetPreviewImage(SZVLGZvgGeoImage& image) {
    return imp->ReadPreview(image);
}

unsigned int CZVLGBlockReader::GetGeoBlockNum() {
    return imp->GeoBlockNum();
}

unsigned int CZVLGBlockReader::GetGeoNumInBlock(unsigned int block) {
    return imp->GeoNumInBlock(block);
}

unsigned int CZVLGBlockReader::GetGeoIdentificationNum() {
    return imp->IdentificationNum();
}

bool CZVLGBlockReader::GetGeoIdentificationByIndex(unsigned int i, std::wstring& identification,
                                                   SZVLGZvgGeoIndex& index) {
    return imp->ReadIdentification(i, identification, index);
}

}  // namespace ZVSmartZvg
