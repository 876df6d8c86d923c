#include <algorithm>

#include "support.h"

namespace support {

namespace {

/// Appends values of every kind to a dump, each list behind its length.
struct Dumper {
    OwnedBuffer buffer;
    CZVFTAllocBufferOutStream stream{&buffer};
    CZVFTSerialWriter writer{&stream};

    template <class... Values>
    Dumper& operator()(const Values&... values) {
        (Put(values), ...);
        return *this;
    }
    std::string Text() { return {buffer.data, buffer.data + stream.GetPos()}; }

    void Put(u8 value) { writer.WriteU8(value); }
    void Put(u16 value) { writer.WriteU16(value); }
    void Put(u32 value) { writer.WriteU32(value); }
    void Put(u64 value) { writer.WriteU64(value); }
    void Put(double value) { writer.WriteF64(value); }
    void Put(const std::wstring& text) { writer.WriteWString(text); }
    void Put(const SerialKey& key) { writer.WriteKey(key); }
    template <class A, class B>
    void Put(const std::pair<A, B>& pair) {
        (*this)(pair.first, pair.second);
    }
    template <class Object>
    requires requires(const Object& object, CZVFTSerialWriter* out) { object.WriteSerial(out, 1U); }
    void Put(const Object& object) { object.WriteSerial(&writer, 1); }
    template <class List>
    requires requires(const List& list) { list.begin() != list.end(); }
    void Put(const List& list) {
        Put(u64{list.size()});
        for (const auto& element : list) Put(element);
    }
    void PutBuffer(const u8* bytes, u32 byteCount) {
        Put(byteCount);
        if (bytes != nullptr) writer.WriteBytes(bytes, byteCount);
    }

    void Put(const SZVLGZvgGeoBlob& blob) {
        (*this)(blob.str1, blob.str2, blob.str3, blob.transf);
        PutBuffer(blob.data, blob.dataSize);
    }
    void Put(const SZVLGZvgGeoImage& image) {
        (*this)(image.width, image.height, image.name, image.transf);
        PutBuffer(image.pixels, image.PixelBytes());
    }
    void Put(const SZVLGZvgGeoRenderMesh& m) {
        (*this)(m.points, m.pointIndices, m.coordPairs, m.vectors, m.extraIndices);
    }
    void Put(const SZVLGZvgGeoNamedTransf& named) { (*this)(named.name, named.transf); }
    void Put(const SZVLGZvgGeoPointList& l) { (*this)(l.points, l.valueA, l.valueB); }
    void Put(const SZVLGZvgDisplayAttr& a) {
        (*this)(a.flags, a.red, a.green, a.blue, a.alpha, a.zBufferSize, a.styleName, a.lineValue);
        (*this)(a.lineByte, a.extraByte, a.transf, a.properties, a.flags2, a.red2, a.green2);
        (*this)(a.blue2, a.alpha2, a.name2, a.real1, a.real2, a.real3, a.real4, a.real5, a.name3);
        (*this)(a.fillRed, a.fillGreen, a.fillBlue, a.fillAlpha, a.fillReal, a.fillName);
        (*this)(a.hatchReal, a.hatchName, a.real6, a.last32);
    }
    /// Depth-first, without the call stack.
    void Put(const SZVLGZvgGeo& root) {
        std::vector<const SZVLGZvgGeo*> pending = {&root};
        while (!pending.empty()) {
            const SZVLGZvgGeo& g = *pending.back();
            pending.pop_back();
            (*this)(g.blobs, g.visualShells, g.renderMeshes, g.lineSegments, g.boundArcs);
            (*this)(g.polylines, g.circles, g.shells, g.meshes, g.polyFaceMeshes, g.namedTransfs);
            (*this)(g.pointLists, g.images, g.namedTransfs2, u64{g.subGeos.size()});
            for (const SZVLGZvgSubGeo& sub : g.subGeos) {
                Put(sub.attr);
                pending.push_back(&sub.geo);
            }
        }
    }
    void Put(const SZVLGZvgGeoId& id) { (*this)(id.guidName, id.textA, id.textB); }
    void Put(const SZVLGZvgMaterial& m) { (*this)(m.guidName, m.textA, m.textB, m.properties); }
    void Put(const SZVLGZvgCompGeoRef& r) {
        (*this)(r.refKind, r.refValueA, r.refValueB, r.materials, r.geoIds);
    }
    void Put(const SZVLGZvgComp& c) {
        (*this)(c.classLevel1Name, c.classLevel1Id, c.classLevel1DataA, c.classLevel1DataB);
        (*this)(c.ownerGuidName, c.ownerTextA, c.ownerTextB, c.ownerSecondGuidName, c.ownerTextC);
        (*this)(c.classLevel2Name, c.classLevel2Id, c.classLevel3Name, c.classLevel3Id);
        (*this)(c.classLevel4Name, c.classLevel4Id, c.classLevel4Attr, c.classLevel2bName);
        (*this)(c.classLevel2bId, c.classLevel2bAttr, c.compGuidName, c.relatedGuidNames);
        (*this)(c.groupGuidName, c.compProperties, c.geoRefs, c.compAttr);
    }
};

std::string NumberAnswer(u64 number) {
    return number == 0 ? std::string() : std::string(1, '#').append(std::to_string(number));
}

template <class Number>
Query NumberQuery(Number (CZVLGBlockReader::*ask)()) {
    return [ask](CZVLGBlockReader& reader) { return NumberAnswer((reader.*ask)()); };
}

std::string HeadAnswer(CZVLGBlockReader& reader) {
    SZVLGZvgBlockHeadInfo head;
    reader.GetHeadInfo(head);
    return Dumper()(head.firstText, head.secondText, static_cast<u32>(head.optionalValue),
                    head.optionalText, head.transf, head.flags)
        .Text()
        .append(std::to_string(reader.GetVersion()));
}

std::string PreviewAnswer(CZVLGBlockReader& reader) {
    SZVLGZvgGeoImage image;
    return reader.GetPreviewImage(image) ? Dumper()(image).Text() : std::string();
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
    unsigned long long dataA = 0, dataB = 0;
    if (!reader.GetFloorDataByIndex(floor, dataA, dataB) && name.empty() && order == 0xFFFFFFFF)
        return "";
    return std::string(name.begin(), name.end()) + ":" + std::to_string(order) + ":" +
           std::to_string(dataA) + ":" + std::to_string(dataB);
}

std::string CompAnswer(CZVLGBlockReader& reader, const SZVLGCompIndex& index) {
    SZVLGZvgComp comp;
    return reader.GetCompByIndex(index, comp) ? Dump(comp) : std::string();
}

std::string GeoAnswer(CZVLGBlockReader& reader, const SZVLGZvgGeoIndex& index) {
    SZVLGZvgGeo geo;
    return reader.GetGeoByIndex(index, geo) ? Dump(geo) : std::string();
}

std::vector<Query> MakeQueries() {
    using Reader = CZVLGBlockReader;
    std::vector<Query> queries = {HeadAnswer,
                                  NumberQuery(&Reader::GetFloorNum),
                                  NumberQuery(&Reader::GetGeoBlockNum),
                                  NumberQuery(&Reader::GetGeoIdentificationNum),
                                  NumberQuery(&Reader::GetEstimatedDataSize),
                                  PreviewAnswer};
    const auto add = [&](Query query) { queries.push_back(std::move(query)); };
    for (u32 i = 0; i < 3; ++i) {
        add([i](Reader& reader) { return FloorAnswer(reader, i); });
        add([i](Reader& reader) {
            return NumberAnswer(reader.GetFloorCompNum(i) + reader.GetGeoNumInBlock(i));
        });
        for (u32 j = 0; j < 4; ++j) {
            add([i, j](Reader& reader) { return CompAnswer(reader, {i, j}); });
            add([i, j](Reader& reader) { return GeoAnswer(reader, {i, j}); });
        }
    }
    for (u32 i = 0; i < 7; ++i)
        add([i](Reader& reader) { return IdentificationAnswer(reader, i); });
    return queries;
}

/// Asks about record after record, as many as the reader says but not for ever.
template <class Question>
void AskEach(u32 count, Question question) {
    for (u32 i = 0; i <= std::min(count, 20U); ++i) question(i);
}

std::string UseGeo(CZVLGBlockReader& reader, u32 i) {
    std::wstring key;
    SZVLGZvgGeoIndex index;
    SZVLGZvgGeo geo;
    CZVIMPolyline outline;
    reader.GetGeoIdentificationByIndex(i, key, index);
    if (reader.GetGeoByIdentification(key, geo))
        CZVLGBlockInfoDeal::GetOneCloseXOYPolyInZvgGeo(geo, outline);
    for (const CZVIMMesh& mesh : geo.meshes) MeshToShell(mesh);
    return "";
}

void AskEverything(CZVLGBlockReader& reader) {
    for (const Query& query : Queries()) Ask(query, reader);
    AskEach(reader.GetFloorNum(), [&](u32 i) {
        u32 count = 0;
        Ask([&](CZVLGBlockReader&) { return count = reader.GetFloorCompNum(i), ""; }, reader);
        AskEach(count, [&](u32 j) {
            Ask([&](CZVLGBlockReader&) { return CompAnswer(reader, {i, j}); }, reader);
        });
    });
    AskEach(reader.GetGeoIdentificationNum(),
            [&](u32 i) { Ask([&](CZVLGBlockReader&) { return UseGeo(reader, i); }, reader); });
}

}  // namespace

std::string Dump(const SZVLGZvgGeo& geo) {
    return Dumper()(geo).Text();
}
std::string Dump(const SZVLGZvgComp& comp) {
    return Dumper()(comp).Text();
}

const std::string refused = "refused";

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

std::vector<std::string> Answers(const Bytes& file) {
    const Bytes fresh(file);  // exactly its size: a sanitizer sees every byte read past it
    CZVFTReadBufferInStream in(fresh.data(), fresh.size());
    return Answers(in);
}

void Exercise(const Bytes& file) {
    CZVFTReadBufferInStream in(file.data(), file.size());
    try {
        CZVLGBlockReader reader;
        reader.SetDecodedBlockLimit(64 * mebibyte);
        reader.Init(&in);
        AskEverything(reader);
    } catch (const CZVFTStreamException&) {  // a refused file
    }
    in.Seek(0);
    std::vector<SZVLGBlockFinding> findings;
    CZVLGBlockVerifier().Verify(&in, findings);
}

}  // namespace support
