#include <string>

#include "ZVSmartFormat/StreamException.h"
#include "ZVSmartZvg/BlockReader.h"
#include "ZVSmartZvg/BlockSaver.h"
#include "ZVSmartZvg/BlockVerifier.h"
#include "stream/OwnedBuffer.h"

namespace ZVSmartZvg {

using ZVSmartFormat::AllocBuffer;
using ZVSmartFormat::CZVFTAllocBufferOutStream;
using ZVSmartFormat::CZVFTReadBufferInStream;
using ZVSmartFormat::CZVFTStreamException;
using ZVSmartFormat::OwnedBuffer;

namespace {

constexpr u32 floorCount = 2;
constexpr u32 wallsPerFloor = 3;

SZVLGZvgGeo WallGeo(u32 wall) {
    const double length = 1000.0 * (wall + 1);
    SZVLGZvgGeo geo;
    CZVIMShell shell;
    shell.AddPts({{0, 0, 0}, {length, 0, 0}, {length, 0, 2800}, {0, 0, 2800}});
    shell.AddFaceIndex({0, 1, 2, 3});
    geo.shells.push_back(shell);
    return geo;
}

SZVLGZvgComp Wall(u32 floor, u32 wall) {
    SZVLGZvgComp comp;
    comp.classLevel1Name = L"Floor " + std::to_wstring(floor);
    comp.classLevel1Id = floor;
    comp.classLevel2Name = L"Wall";
    comp.classLevel4Name = L"Concrete";
    comp.compGuidName = L"wall " + std::to_wstring(floor) + L"." + std::to_wstring(wall);
    comp.compProperties = {{L"Length", std::to_wstring(wall + 1) + L" m"}};
    SZVLGZvgCompGeoRef reference;
    reference.geoIdentification = L"wall shape " + std::to_wstring(wall);
    reference.geo = WallGeo(wall);
    comp.geoRefs.push_back(reference);
    return comp;
}

void WriteBuilding(AllocBuffer& buffer) {
    CZVFTAllocBufferOutStream out(&buffer);
    CZVLGBlockSaver saver;
    SZVLGZvgBlockHeadInfo head;
    head.firstText = L"self-test";
    saver.Init(&out, head, "", 2);
    for (u32 floor = 0; floor < floorCount; ++floor)
        for (u32 wall = 0; wall < wallsPerFloor; ++wall) saver.AddComp(Wall(floor, wall));
    saver.WriteEnd();
    // Cut the buffer to what was written, so that the verifier sees the file and nothing else.
    buffer.capacity = out.GetPos();
}

bool IsWhole(CZVLGBlockReader& reader, u32 floor, u32 wall) {
    const SZVLGZvgComp expected = Wall(floor, wall);
    SZVLGZvgComp comp;
    if (!reader.GetCompByIndex({floor, wall}, comp)) return false;
    if (comp.compGuidName != expected.compGuidName) return false;
    if (comp.classLevel1Name != expected.classLevel1Name) return false;
    if (comp.classLevel2Name != expected.classLevel2Name) return false;
    if (comp.classLevel4Name != expected.classLevel4Name) return false;
    if (comp.compProperties != expected.compProperties) return false;
    if (comp.geoRefs.size() != 1 || comp.geoRefs.front().geoIds.size() != 1) return false;

    SZVLGZvgGeo geo;
    const std::wstring key = GetGeoIdentification(comp.geoRefs.front().geoIds.front());
    if (!reader.GetGeoByIdentification(key, geo) || geo.shells.size() != 1) return false;
    const CZVIMShell shell = WallGeo(wall).shells.front();
    return geo.shells.front().GetPoints() == shell.GetPoints() &&
           geo.shells.front().GetFacesIndex() == shell.GetFacesIndex();
}

bool ReadBuilding(const AllocBuffer& buffer) {
    CZVFTReadBufferInStream in(buffer.data, buffer.capacity);
    CZVLGBlockReader reader;
    if (!reader.Init(&in) || reader.GetFloorNum() != floorCount) return false;
    for (u32 floor = 0; floor < floorCount; ++floor) {
        if (reader.GetFloorCompNum(floor) != wallsPerFloor) return false;
        for (u32 wall = 0; wall < wallsPerFloor; ++wall)
            if (!IsWhole(reader, floor, wall)) return false;
    }
    std::vector<SZVLGBlockFinding> findings;
    return CZVLGBlockVerifier().Verify(&in, findings);
}

}  // namespace

bool CZVLGBlockSaver::Test() {
    OwnedBuffer buffer;
    try {
        WriteBuilding(buffer);
        return ReadBuilding(buffer);
    } catch (const CZVFTStreamException&) {
        return false;
    }
}

}  // namespace ZVSmartZvg
