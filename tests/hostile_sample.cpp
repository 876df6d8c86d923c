#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "hostile_support.h"

namespace Hostile {

namespace {

CZVIMTransf Moved(double x) {
    CZVIMTransf transf;
    transf.SetAt(0, 3, x);
    return transf;
}

u8* Buffer(u32 byteCount) {
    u8* const bytes = static_cast<u8*>(std::malloc(byteCount));
    if (bytes == nullptr) throw std::bad_alloc();
    std::memset(bytes, 0x5A, byteCount);
    return bytes;
}

SZVLGZvgGeoImage SampleImage() {
    SZVLGZvgGeoImage image;
    image.width = 2;
    image.height = 1;
    image.name = L"image";
    image.pixels = Buffer(8);
    return image;
}

SZVLGZvgDisplayAttr SampleAttr() {
    SZVLGZvgDisplayAttr attr;
    attr.flags = 0xC6F0;
    attr.flags2 = 0xF8FE0000;
    attr.alpha = 0x80;
    attr.zBufferSize = 12;
    attr.styleName = L"style";
    attr.properties = {{L"key", L"value"}, {L"", L""}};
    attr.transf = Moved(3);
    attr.name2 = attr.name3 = attr.fillName = attr.hatchName = L"n";
    attr.real1 = attr.real6 = 0.5;
    return attr;
}

void AddSolids(SZVLGZvgGeo& geo) {
    CZVIMShell shell;
    shell.AddPts({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
    shell.AddFaceIndex({0, 1, 2});
    geo.shells.push_back(shell);
    CZVIMVisualShell visual;
    visual.shell = shell;
    visual.normals = {{0, 0, 1}};
    visual.faceColors = {7};
    geo.visualShells.push_back(visual);
    CZVIMVisualPolyFaceMesh faces;
    faces.points = {{1, 2, 3}};
    faces.facesIndex = {1, 0};
    faces.faceColors = {9};
    faces.edgeVisibles = {1};
    geo.polyFaceMeshes.push_back(faces);
    CZVIMMesh mesh;
    mesh.AddColPts({{0, 0, 0}, {1, 0, 0}});
    geo.meshes.push_back(mesh);
    SZVLGZvgGeoRenderMesh render;
    render.points = {{0, 0, 0}};
    render.pointIndices = {0};
    render.coordPairs = {{0.5, 0.25}};
    render.vectors = {{0, 0, 1}};
    render.extraIndices = {4};
    geo.renderMeshes.push_back(render);
}

std::wstring KeyOf(u32 geo) {
    return L"geo " + std::to_wstring(geo);
}

SaverStep GeoStep(u32 geo) {
    return [geo](CZVLGBlockSaver& saver, CZVFTOutStream&) {
        saver.AddIdentificationGeo(KeyOf(geo), SampleGeo(geo));
    };
}

SaverStep CompStep(u32 floor, u32 number) {
    return [floor, number](CZVLGBlockSaver& saver, CZVFTOutStream&) {
        saver.AddComp(SampleComp(floor, number));
    };
}

void Begin(CZVLGBlockSaver& saver, CZVFTOutStream& out) {
    SZVLGZvgBlockHeadInfo head;
    head.firstText = L"first";
    head.secondText = L"second";
    head.optionalValue = 5;
    head.optionalText = L"optional";
    head.transf = Moved(1);
    head.flags = 3;
    saver.Init(&out, head, "", 3);
}

std::string NumberAnswer(u32 number) {
    return number == 0 ? std::string() : std::string(1, '#').append(std::to_string(number));
}

template <class Number>
Query NumberQuery(Number (CZVLGBlockReader::*ask)()) {
    return [ask](CZVLGBlockReader& reader) {
        const Number number = (reader.*ask)();
        return NumberAnswer(number);
    };
}

std::string IdentificationAnswer(CZVLGBlockReader& reader, u32 i) {
    std::wstring text;
    SZVLGZvgGeoIndex index;
    if (!reader.GetGeoIdentificationByIndex(i, text, index)) return "";
    return std::string(text.begin(), text.end()) + "@" + std::to_string(index.blockIndex) + "," +
           std::to_string(index.indexInBlock);
}

std::string FloorAnswer(CZVLGBlockReader& reader, u32 floor) {
    const std::wstring name = reader.GetFloorNameByIndex(floor);
    const u32 order = reader.GetFloorOrderByIndex(floor);
    if (name.empty() && order == 0xFFFFFFFF) return "";
    return std::string(name.begin(), name.end()) + ":" + std::to_string(order);
}

template <class Record, class Ask>
std::string RecordAnswer(Ask ask) {
    Record record;
    return ask(record) ? Dump(record) : std::string();
}

std::vector<Query> MakeQueries() {
    using Reader = CZVLGBlockReader;
    std::vector<Query> queries = {[](Reader& reader) {
                                      SZVLGZvgBlockHeadInfo head;
                                      reader.GetHeadInfo(head);
                                      return std::to_string(reader.GetVersion()) + Dump(head);
                                  },
                                  NumberQuery(&Reader::GetFloorNum),
                                  NumberQuery(&Reader::GetGeoBlockNum),
                                  NumberQuery(&Reader::GetGeoIdentificationNum),
                                  NumberQuery(&Reader::GetEstimatedDataSize),
                                  [](Reader& reader) {
                                      SZVLGZvgGeo record;
                                      const bool found =
                                          reader.GetPreviewImage(record.images.emplace_back());
                                      return found ? Dump(record) : std::string();
                                  }};
    for (u32 i = 0; i < 3; ++i) {
        queries.push_back([i](Reader& reader) { return FloorAnswer(reader, i); });
        queries.push_back([i](Reader& reader) {
            const u32 count = reader.GetFloorCompNum(i) + reader.GetGeoNumInBlock(i);
            return NumberAnswer(count);
        });
        for (u32 j = 0; j < 4; ++j) {
            queries.push_back([i, j](Reader& reader) {
                return RecordAnswer<SZVLGZvgComp>([&](auto& comp) {
                    return reader.GetCompByIndex({i, j}, comp);
                });
            });
            queries.push_back([i, j](Reader& reader) {
                return RecordAnswer<SZVLGZvgGeo>([&](auto& geo) {
                    return reader.GetGeoByIndex({i, j}, geo);
                });
            });
        }
    }
    for (u32 i = 0; i < 7; ++i)
        queries.push_back([i](Reader& reader) { return IdentificationAnswer(reader, i); });
    return queries;
}

/// Asks about record after record, as many as the reader says but not for ever.
template <class Question>
void AskEach(u32 count, Question question) {
    for (u32 i = 0; i <= std::min(count, 20U); ++i) question(i);
}

void AskEverything(CZVLGBlockReader& reader) {
    Query guarded;
    const auto ask = [&](auto question) {
        guarded = [&](CZVLGBlockReader&) { return question(); };
        Ask(guarded, reader);
    };
    for (const Query& query : Queries()) Ask(query, reader);
    AskEach(reader.GetFloorNum(), [&](u32 i) {
        u32 count = 0;
        ask([&] { return count = reader.GetFloorCompNum(i), std::string(); });
        AskEach(count, [&](u32 j) {
            ask([&] {
                SZVLGZvgComp comp;
                return reader.GetCompByIndex({i, j}, comp), std::string();
            });
        });
    });
    AskEach(reader.GetGeoIdentificationNum(), [&](u32 i) {
        ask([&] {
            std::wstring key;
            SZVLGZvgGeoIndex index;
            SZVLGZvgGeo geo;
            CZVIMPolyline outline;
            reader.GetGeoIdentificationByIndex(i, key, index);
            if (reader.GetGeoByIdentification(key, geo))
                CZVLGBlockInfoDeal::GetOneCloseXOYPolyInZvgGeo(geo, outline);
            for (const CZVIMMesh& mesh : geo.meshes) MeshToShell(mesh);
            return std::string();
        });
    });
}

}  // namespace

const std::string refused = "refused";

SZVLGZvgGeo SampleGeo(u32 variant) {
    SZVLGZvgGeo geo;
    geo.lineSegments = {CZVIMLineSegment({0, 0, 0}, {double(variant), 1, 0})};
    if (variant != 0) return geo;
    SZVLGZvgGeoBlob& blob = geo.blobs.emplace_back();
    blob.str1 = L"blob";
    blob.dataSize = 3;
    blob.data = Buffer(3);
    AddSolids(geo);
    geo.boundArcs = {CZVIMBoundArc({0, 0, 0}, {0, 0, 1}, {1, 0, 0}, 1.5)};
    CZVIMPolyline3D polyline;
    polyline.AddPoint({1, 1, 0});
    geo.polylines = {polyline};
    geo.circles = {CZVIMCircle({0, 0, 0}, {0, 0, 1}, 2)};
    geo.namedTransfs = {{L"name", Moved(2)}};
    geo.namedTransfs2 = {{L"name2", Moved(4)}};
    geo.pointLists = {{{{1, 2, 3}}, 4, 5}};
    geo.images.push_back(SampleImage());
    geo.subGeos.resize(2);
    geo.subGeos[0].attr = SampleAttr();
    geo.subGeos[0].geo = SampleGeo(6);
    return geo;
}

SZVLGZvgComp SampleComp(u32 floor, u32 number) {
    SZVLGZvgComp comp;
    comp.classLevel1Name = L"floor " + std::to_wstring(floor);
    comp.classLevel1Id = 40 + floor;
    comp.classLevel1DataA = 1;
    comp.ownerGuidName = ZVSmartSerial::SerialGuid{1, 2, 3, {4}};
    comp.ownerTextA = comp.ownerTextB = comp.ownerTextC = L"owner";
    comp.classLevel2Name = L"walls";
    comp.classLevel3Name = L"outer";
    comp.classLevel4Name = L"brick";
    comp.classLevel2bName = L"side";
    if (number == 0) comp.classLevel4Attr = SampleAttr();
    comp.compGuidName = L"comp " + std::to_wstring(number);
    comp.relatedGuidNames = {L"other"};
    comp.groupGuidName = L"group";
    comp.compProperties = {{L"width", L"24 cm"}};
    SZVLGZvgCompGeoRef& reference = comp.geoRefs.emplace_back();
    reference.geoIdentification = KeyOf(5);
    reference.geo = SampleGeo(5);
    reference.materials[8].textA = L"material";
    reference.materials[8].properties = {{L"a", L"b"}};
    return comp;
}

const std::vector<SaverStep>& SampleSteps() {
    static const std::vector<SaverStep> steps = {
        Begin,
        GeoStep(0),
        GeoStep(1),
        CompStep(0, 0),
        CompStep(1, 1),
        CompStep(0, 2),
        GeoStep(2),
        [](CZVLGBlockSaver& saver, CZVFTOutStream&) { saver.AddPreviewImage(SampleImage()); },
        [](CZVLGBlockSaver& saver, CZVFTOutStream&) { saver.WriteEnd(); }};
    return steps;
}

Bytes SampleFile(unsigned int version) {
    return Written(SampleSteps(), version);
}

const std::vector<Query>& Queries() {
    static const std::vector<Query> queries = MakeQueries();
    return queries;
}

std::string Ask(const Query& query, CZVLGBlockReader& reader) {
    try {
        return query(reader);
    } catch (const CZVFTStreamException&) {
        return refused;
    }
}

std::vector<std::string> Answers(CZVFTInStream& in) {
    CZVLGBlockReader reader;
    try {
        reader.Init(&in);
    } catch (const CZVFTStreamException&) {
        return std::vector<std::string>(Queries().size(), refused);
    }
    std::vector<std::string> answers;
    for (const Query& query : Queries()) answers.push_back(Ask(query, reader));
    return answers;
}

void Exercise(const Bytes& file, unsigned long long decodedLimit) {
    CZVFTReadBufferInStream in(file.data(), file.size());
    try {
        CZVLGBlockReader reader;
        reader.SetDecodedBlockLimit(decodedLimit);
        reader.Init(&in);
        AskEverything(reader);
    } catch (const CZVFTStreamException&) {  // a refused file
    }
    in.Seek(0);
    std::vector<SZVLGBlockFinding> findings;
    CZVLGBlockVerifier().Verify(&in, findings);
}

}  // namespace Hostile
