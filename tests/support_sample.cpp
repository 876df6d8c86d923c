#include <cstring>
#include <new>

#include "support.h"

namespace support {

namespace {

u8* Filled(std::size_t byteCount, u8 value) {
    void* const bytes = std::malloc(byteCount);
    if (bytes == nullptr) throw std::bad_alloc();
    return static_cast<u8*>(std::memset(bytes, value, byteCount));
}

}  // namespace

SZVLGZvgGeo SomeGeo(u64 value) {
    SZVLGZvgGeo geo;
    geo.pointLists = {{{}, value, 0}};
    return geo;
}
u64 ValueOf(const SZVLGZvgGeo& geo) {
    return geo.pointLists.size() == 1 ? geo.pointLists[0].valueA : ~u64{0};
}

CZVIMTransf Shifted() {
    CZVIMTransf transf;
    for (int row = 0; row < 3; ++row) transf.SetAt(row, 3, row + 1);
    return transf;
}

SZVLGZvgDisplayAttr FullAttr() {
    return {0xC6F0,     1,    2,  3,         4,         5,
            L"s",       6,    7,  8,         Shifted(), {{L"k", L"v"}, {L"k", L""}},
            0xF8FE0000, 9,    10, 11,        12,        L"2",
            1,          2,    3,  1,         2,         L"3",
            13,         14,   15, 16,        3,         L"f",
            3,          L"h", 2,  0xDEADBEEF};
}

SZVLGZvgGeoBlob SomeBlob(u32 byteCount) {
    SZVLGZvgGeoBlob blob;
    blob.str1 = L"a";
    blob.str3 = L"b";
    blob.dataSize = byteCount;
    blob.data = Filled(byteCount, 0xAB);
    blob.transf = Shifted();
    return blob;
}
SZVLGZvgGeoImage SomeImage(u32 width, u32 height) {
    SZVLGZvgGeoImage image;
    image.width = width;
    image.height = height;
    image.name = L"i";
    image.pixels = Filled(std::size_t{width} * height * 4 + 1, 0xCD);
    return image;
}

SZVLGZvgGeo FullGeo() {
    const CZVIMPosition origin(0, 0, 0), x1(1, 0, 0), y1(0, 1, 0), p(1, 2, 3);
    const CZVIMVector up(0, 0, 1);
    CZVIMShell shell;
    shell.AddPt(p);
    shell.AddFaceIndex({0});
    CZVIMMesh mesh;
    mesh.SetRow(2);
    mesh.SetColumn(1);
    mesh.AddPt(p);
    CZVIMPolyline3D polyline;
    polyline.AddPoint(p);
    polyline.SetClosedFlag();
    SZVLGZvgGeo geo;
    geo.blobs = {SomeBlob(2)};
    geo.visualShells = {{shell, {up}, {0xAABBCCDD}}};
    geo.renderMeshes = {{{p}, {5, 0xFFFFFFFF}, {{1, 2}}, {up}, {9}, {1}, {2}, {3}, {{}}}};
    geo.lineSegments = {{p, origin}, {x1, p}};
    geo.boundArcs = {{origin, up, x1, y1, 2}};
    geo.polylines = {polyline};
    geo.circles = {{p, up, 2}};
    geo.shells = {shell};
    geo.meshes = {mesh};
    geo.polyFaceMeshes = {{{p}, {1, 0}, {0xAABBCCDD}, {1, 0}}};
    geo.namedTransfs = {{L"n", Shifted()}};
    geo.pointLists = {{{p}, 0x0102030405060708, 0xFFFFFFFFFFFFFFFE}};
    geo.images = {SomeImage(1, 2)};
    geo.namedTransfs2 = {{L"m", CZVIMTransf()}};
    geo.subGeos.resize(2);
    geo.subGeos[1].geo.shells.resize(1);
    return geo;
}

SZVLGZvgComp Comp(const SerialKey& key, const std::wstring& floor) {
    SZVLGZvgComp comp;
    comp.compGuidName = key;
    comp.classLevel1Name = floor;
    return comp;
}

SZVLGZvgComp FullComp() {
    SZVLGZvgDisplayAttr attr4, compAttr;
    attr4.flags = 0x400;
    attr4.extraByte = 0x0B;
    compAttr.flags = 0x40;
    compAttr.zBufferSize = 6;
    const SerialGuid guid = {1, 0x0203, 0x0405, {6, 7, 8, 9, 10, 11, 12, 13}};
    const SZVLGZvgGeoId row = {L"i", L"t", L""};
    const std::map<u32, SZVLGZvgMaterial> materials = {{8, {}},
                                                       {7, {L"m", L"x", L"y", {{L"p", L"q"}}}}};
    // clang-format off
    return {L"F", 2, 0x0102030405060708, 9, L"o", L"a", L"b", L"s", L"c",
            L"2", 0x22, L"3", 0x33, L"4", 0x44, attr4, L"5", 0x55, {},
            guid, {L"r", L"q"}, L"g", {{L"k", L"v"}},
            {{L"", {}, 1, 2, 3, materials, {row, {L"none", L"j", L"u"}}},
             {L"", {}, 0, 0, 0, {}, {row}}},
            compAttr};
    // clang-format on
}

SZVLGZvgGeo SampleGeo(u32 number) {
    SZVLGZvgGeo geo;
    if (number == 0) {
        geo = FullGeo();
        geo.subGeos[0].attr = FullAttr();
        geo.subGeos[0].geo = SampleGeo(6);
    }
    geo.lineSegments = {CZVIMLineSegment({0, 0, 0}, {double(number), 1, 0})};
    return geo;
}

namespace {

void Begin(CZVLGBlockSaver& saver, CZVFTOutStream& out) {
    saver.Init(&out, {L"first", L"second", 5, L"optional", Shifted(), 3}, "", 3);
}

SaverStep GeoStep(u32 number) {
    const std::wstring key = L"geo " + std::to_wstring(number);
    return [key, geo = SampleGeo(number)](CZVLGBlockSaver& saver, CZVFTOutStream&) {
        saver.AddIdentificationGeo(key, geo);
    };
}

SaverStep CompStep(u32 floor, u32 number) {
    SZVLGZvgComp comp = FullComp();
    comp.classLevel1Name = L"floor " + std::to_wstring(floor);
    comp.classLevel1Id = 40 + floor;
    if (number == 0) comp.classLevel4Attr = FullAttr();
    comp.compGuidName = L"comp " + std::to_wstring(number);
    for (SZVLGZvgCompGeoRef& reference : comp.geoRefs) reference.geoIds[0].guidName = L"geo 5";
    comp.geoRefs.push_back({L"geo 5", SampleGeo(5), 0, 0, 0, {}, {}});
    return [comp](CZVLGBlockSaver& saver, CZVFTOutStream&) { saver.AddComp(comp); };
}

}  // namespace

const std::vector<SaverStep>& SampleSteps() {
    static const std::vector<SaverStep> steps = {
        Begin,
        GeoStep(0),
        GeoStep(1),
        CompStep(0, 0),
        CompStep(1, 1),
        CompStep(0, 2),
        GeoStep(2),
        [image = SomeImage(2, 1)](CZVLGBlockSaver& saver, CZVFTOutStream&) {
            saver.AddPreviewImage(image);
        },
        [](CZVLGBlockSaver& saver, CZVFTOutStream&) { saver.WriteEnd(); }};
    return steps;
}

Bytes SampleFile(unsigned int version) {
    return Streamed([&](CZVFTOutStream& out) {
        CZVLGBlockSaver saver(version);
        for (const SaverStep& step : SampleSteps()) step(saver, out);
    });
}

}  // namespace support
