// Calls of a saver that the input chooses, written, read again and compared.

#include <cstdlib>
#include <map>

#include "Choices.h"
#include "support.h"

namespace {

using namespace support;

CZVIMPosition Point(Choices& choices) {
    return {choices.Real(), choices.Real(), choices.Real()};
}

void AddBuffers(SZVLGZvgGeo& geo, Choices& choices) {
    SZVLGZvgGeoBlob& blob = geo.blobs.emplace_back();
    blob.str1 = choices.Text();
    blob.dataSize = choices.Byte();
    blob.data = static_cast<u8*>(std::calloc(1, blob.dataSize + std::size_t{1}));
    SZVLGZvgGeoImage& image = geo.images.emplace_back();
    image.width = choices.Byte() % 8;
    image.height = choices.Byte() % 8;
    image.pixels = static_cast<u8*>(std::calloc(1, image.PixelBytes() + std::size_t{1}));
}

/// What is there when the record is written comes back; an empty buffer comes back as null.
SZVLGZvgGeo ChosenGeo(Choices& choices) {
    SZVLGZvgGeo geo;
    for (u8 lists = choices.Byte() % 8; lists != 0; --lists) {
        const u8 kind = choices.Byte() % 8;
        if (kind == 0) geo.lineSegments.emplace_back(Point(choices), Point(choices));
        if (kind == 1) geo.shells.emplace_back().AddPts({Point(choices)});
        if (kind == 2) geo.polylines.emplace_back().AddPoint(Point(choices));
        if (kind == 3) geo.pointLists.push_back({{Point(choices)}, choices.Number(), 1});
        if (kind == 4) geo.renderMeshes.emplace_back().pointIndices = {choices.Number()};
        if (kind == 5) geo.namedTransfs.push_back({choices.Text(), {}});
        if (kind == 6) AddBuffers(geo, choices);
        if (kind == 7) {
            SZVLGZvgGeo outer;
            outer.subGeos.resize(1 + choices.Byte() % 2U);
            outer.subGeos[0].attr.flags = 0x80;
            outer.subGeos[0].attr.styleName = choices.Text();
            outer.subGeos.back().geo = std::move(geo);
            geo = std::move(outer);
        }
    }
    return geo;
}

SZVLGZvgComp ChosenComp(Choices& choices) {
    SZVLGZvgComp comp;
    comp.classLevel1Name = choices.Byte() % 2 ? L"low" : L"high";
    comp.classLevel2Name = choices.Text();
    comp.classLevel3Name = choices.Text();
    comp.classLevel4Name = choices.Text();
    comp.classLevel2bName = choices.Text();
    comp.ownerGuidName = choices.Text();
    comp.compGuidName = choices.Text() + L"c";
    comp.groupGuidName = choices.Text() + L"g";
    if (choices.Byte() % 2) comp.compProperties = {{choices.Text(), choices.Text()}};
    SZVLGZvgCompGeoRef& reference = comp.geoRefs.emplace_back();
    reference.refValueA = choices.Number();
    SZVLGZvgGeoId& row = reference.geoIds.emplace_back();
    row.guidName = choices.Text() + L"i";
    return comp;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    Choices choices(data, size);
    std::map<std::wstring, std::string> geos;
    std::map<std::pair<std::wstring, std::wstring>, std::string> comps;
    const unsigned int version = 2 + choices.Byte() % 3U;
    const unsigned int geosPerBlock = 1 + choices.Byte() % 4U;
    const Bytes file = Saved(version, geosPerBlock, [&](CZVLGBlockSaver& saver) {
        for (int calls = 0; choices.AnyLeft() && calls < 40; ++calls) {
            if (choices.Byte() % 2 != 0) {
                const std::wstring key = choices.Text();
                const SZVLGZvgGeo geo = ChosenGeo(choices);
                saver.AddIdentificationGeo(key, geo);
                if (!key.empty()) geos.try_emplace(key, Dump(geo));
            } else {
                const SZVLGZvgComp comp = ChosenComp(choices);
                saver.AddComp(comp);
                comps.try_emplace({comp.classLevel1Name, comp.compGuidName.name}, Dump(comp));
            }
        }
    });

    CZVFTReadBufferInStream in(file.data(), file.size());
    std::vector<SZVLGBlockFinding> findings;
    CZVLGBlockVerifier().Verify(&in, findings);
    for (const SZVLGBlockFinding& finding : findings)  // references to nowhere are the caller's
        Require(finding.reason.find("rows lead to no geometry") != std::string::npos);
    CZVLGBlockReader reader;
    Require(reader.Init(&in) && reader.GetGeoIdentificationNum() == geos.size());
    for (const auto& [key, dump] : geos) {
        SZVLGZvgGeo geo;
        Require(reader.GetGeoByIdentification(key, geo) && Dump(geo) == dump);
    }
    for (u32 floor = 0; floor < reader.GetFloorNum(); ++floor)
        for (u32 i = 0; i < reader.GetFloorCompNum(floor); ++i) {
            SZVLGZvgComp comp;
            Require(reader.GetCompByIndex({floor, i}, comp));
            const auto stored = comps.find({comp.classLevel1Name, comp.compGuidName.name});
            Require(stored != comps.end() && stored->second == Dump(comp));
            comps.erase(stored);
        }
    Require(comps.empty());
    return 0;
}
