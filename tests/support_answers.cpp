#include <algorithm>
#include <numeric>
#include <stdexcept>

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

std::string HeadAnswer(CZVLGBlockReader& reader) {
    SZVLGZvgBlockHeadInfo head;
    reader.GetHeadInfo(head);
    return Dumper()(head.firstText, head.secondText, static_cast<u32>(head.optionalValue),
                    head.optionalText, head.transf, head.flags)
        .Text()
        .append(std::to_string(reader.GetVersion()));
}

template <class Number>
Query NumberQuery(Number (CZVLGBlockReader::*count)()) {
    return [count](CZVLGBlockReader& reader) { return NumberAnswer((reader.*count)()); };
}

}  // namespace

namespace ask {

const Query preview = [](CZVLGBlockReader& reader) {
    SZVLGZvgGeoImage image;
    return reader.GetPreviewImage(image) ? Dumper()(image).Text() : std::string();
};
const Query dataSize = NumberQuery(&CZVLGBlockReader::GetEstimatedDataSize);
const Query floorCount = NumberQuery(&CZVLGBlockReader::GetFloorNum);
const Query blockCount = NumberQuery(&CZVLGBlockReader::GetGeoBlockNum);

Query ListedName(u32 floor) {
    return [floor](CZVLGBlockReader& reader) {
        std::vector<std::wstring> names;
        reader.GetAllFloorName(names);
        return floor < names.size() ? std::string(names[floor].begin(), names[floor].end()) : "";
    };
}
Query FloorName(u32 floor) {
    return [floor](CZVLGBlockReader& reader) {
        const std::wstring name = reader.GetFloorNameByIndex(floor);
        const u32 order = reader.GetFloorOrderByIndex(floor);
        unsigned long long dataA = 0, dataB = 0;
        const bool exists = reader.GetFloorDataByIndex(floor, dataA, dataB);
        if (!exists && name.empty() && order == 0xFFFFFFFF) return std::string();
        return std::string(name.begin(), name.end()) + ":" + std::to_string(order) + ":" +
               std::to_string(dataA) + ":" + std::to_string(dataB);
    };
}
Query CompCount(u32 floor) {
    return
        [floor](CZVLGBlockReader& reader) { return NumberAnswer(reader.GetFloorCompNum(floor)); };
}
Query GeoCount(u32 block) {
    return
        [block](CZVLGBlockReader& reader) { return NumberAnswer(reader.GetGeoNumInBlock(block)); };
}
namespace {

/// The texts that a view looks at; a half of a pair that the file has alone stays one.
class Looked {
  public:
    explicit Looked(const SZVLGCompView& view) : view(view) {}

    static std::wstring Text(const SZVLGTextView& text) {
        Bytes stored(4 + std::size_t{2} * text.unitCount);
        for (std::size_t i = 0; i < 4; ++i) stored[i] = u8(text.unitCount >> (24 - 8 * i));
        std::copy_n(text.units, std::size_t{2} * text.unitCount, stored.begin() + 4);
        CZVFTReadBufferInStream in(stored.data(), stored.size());
        std::wstring wide;
        CZVFTSerialReader(&in).ReadWString(wide);
        return wide;
    }
    static SerialKey Key(const SZVLGKeyView& key) { return {key.guid, Text(key.name)}; }
    PropertyList Properties(const SZVLGViewRange& range) const {
        PropertyList list;
        for (u32 i = 0; i < range.count; ++i) {
            const auto& [name, value] = view.properties[range.first + i];
            list.emplace_back(Text(name), Text(value));
        }
        return list;
    }
    SZVLGZvgCompGeoRef Reference(const SZVLGCompGeoRefView& from) const {
        SZVLGZvgCompGeoRef ref;
        ref.refKind = from.refKind;
        ref.refValueA = from.refValueA;
        ref.refValueB = from.refValueB;
        for (u32 i = 0; i < from.materials.count; ++i) {
            const SZVLGMaterialView& material = view.materials[from.materials.first + i];
            ref.materials[material.key] = {Key(material.guidName), Text(material.textA),
                                           Text(material.textB), Properties(material.properties)};
        }
        for (u32 i = 0; i < from.geoIds.count; ++i) {
            const SZVLGGeoIdView& row = view.geoIds[from.geoIds.first + i];
            ref.geoIds.push_back({Key(row.guidName), Text(row.textA), Text(row.textB)});
        }
        return ref;
    }

  private:
    const SZVLGCompView& view;
};

/// Replaces of a component what its view has.
void LookAgain(const SZVLGCompView& view, SZVLGZvgComp& comp) {
    const Looked looked(view);
    comp.compGuidName = Looked::Key(view.compGuidName);
    comp.relatedGuidNames.clear();
    for (const auto& key : view.relatedGuidNames) comp.relatedGuidNames.push_back(Looked::Key(key));
    const bool hasGroup = view.groupGuidName.name.units != nullptr;
    comp.groupGuidName = hasGroup ? Looked::Key(view.groupGuidName) : SerialKey();
    comp.compProperties = looked.Properties(view.compProperties);
    comp.geoRefs.clear();
    for (const auto& ref : view.geoRefs) comp.geoRefs.push_back(looked.Reference(ref));
    comp.compAttr = view.compAttr;
}

}  // namespace

/// As the record has it, in so far as its view has not.
Query Comp(u32 floor, u32 i) {
    return [floor, i](CZVLGBlockReader& reader) {
        SZVLGZvgComp comp;
        if (!reader.GetCompByIndex({floor, i}, comp)) return std::string();
        const std::string whole = Dump(comp);
        thread_local SZVLGCompView view;  // one for all, as a host's loop would have it
        if (!reader.GetCompViewByIndex({floor, i}, {}, view)) return std::string("no view");
        LookAgain(view, comp);
        if (Dump(comp) != whole) return std::string("another view");
        reader.GetCompByIndex({floor, i}, comp);  // what it hides is told last
        return whole;
    };
}
Query Geo(u32 block, u32 i) {
    return [block, i](CZVLGBlockReader& reader) {
        SZVLGZvgGeo geo;
        return reader.GetGeoByIndex({block, i}, geo) ? Dump(geo) : std::string();
    };
}
Query Geo(const std::wstring& key) {
    return [key](CZVLGBlockReader& reader) {
        SZVLGZvgGeo geo;
        return reader.GetGeoByIdentification(key, geo) ? Dump(geo) : std::string();
    };
}
Query Identification(u32 i) {
    return [i](CZVLGBlockReader& reader) {
        std::wstring text;
        SZVLGZvgGeoIndex index;
        if (!reader.GetGeoIdentificationByIndex(i, text, index)) return std::string();
        return std::string(text.begin(), text.end()) + "@" + std::to_string(index.blockIndex) +
               "," + std::to_string(index.indexInBlock);
    };
}

}  // namespace ask

namespace {

std::vector<Query> MakeQueries() {
    std::vector<Query> queries = {
        HeadAnswer,      ask::floorCount,
        ask::blockCount, NumberQuery(&CZVLGBlockReader::GetGeoIdentificationNum),
        ask::dataSize,   ask::preview};
    for (u32 i = 0; i < 3; ++i) {
        queries.insert(queries.end(), {ask::FloorName(i), ask::ListedName(i), ask::CompCount(i),
                                       ask::GeoCount(i)});
        for (u32 j = 0; j < 4; ++j)
            queries.insert(queries.end(), {ask::Comp(i, j), ask::Geo(i, j)});
    }
    for (u32 i = 0; i < 7; ++i) {
        queries.push_back(ask::Identification(i));
        queries.push_back(ask::Geo(L"geo " + std::to_wstring(i)));
    }
    return queries;
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

std::vector<std::string> AskAll(CZVLGBlockReader& reader) {
    std::vector<std::string> answers;
    for (const Query& query : Queries()) answers.push_back(Ask(query, reader));
    return answers;
}

std::vector<std::string> Answers(CZVFTInStream& in) {
    CZVLGBlockReader reader;
    if (Thrown([&] { reader.Init(&in); }).empty()) return AskAll(reader);
    return std::vector<std::string>(Queries().size(), refused);
}

std::vector<std::string> Answers(const Bytes& file) {
    const Bytes fresh(file);  // exactly its size: a sanitizer sees every byte read past it
    CZVFTReadBufferInStream in(fresh.data(), fresh.size());
    return Answers(in);
}

Miss LastMissOf(CZVLGBlockReader& reader) {
    SZVLGBlockFinding finding = {0, ""};
    const EZVLGMiss kind = reader.GetLastMiss(finding);
    return {kind, finding.position, finding.reason};
}

namespace {

Findings VerifiedBy(unsigned int threads, const Bytes& file, u64 base) {
    const Bytes placed = Bytes(base, 0xEE) + file;
    CZVFTReadBufferInStream in(placed.data(), placed.size());
    in.Seek(base);
    Findings findings(1);
    const bool isWhole = CZVLGBlockVerifier().Verify(&in, ~u64{0}, findings, threads);
    if (isWhole != findings.empty() || in.GetPos() != base)
        throw std::logic_error("what the verifier says or leaves contradicts what it found");
    return findings;
}

}  // namespace

Findings VerifiedAlone(const Bytes& file) {
    return VerifiedBy(0, file, 0);
}

Findings Verified(const Bytes& file, u64 base) {
    Findings findings = VerifiedBy(0, file, base);
    const auto isSame = [](const SZVLGBlockFinding& a, const SZVLGBlockFinding& b) {
        return a.position == b.position && a.reason == b.reason;
    };
    const Findings inThreads = VerifiedBy(3, file, base);
    if (!std::equal(findings.begin(), findings.end(), inThreads.begin(), inThreads.end(), isSame))
        throw std::logic_error("the verifier finds something else where threads help it");
    return findings;
}

void Exercise(const Bytes& file) {
    CZVFTReadBufferInStream in(file.data(), file.size());
    Thrown([&] {  // a refused file
        CZVLGBlockReader reader;
        reader.SetDecodedBlockLimit(64 * mebibyte);
        reader.Init(&in);
        AskAll(reader);
        for (u32 i = 0; i < std::min(reader.GetGeoIdentificationNum(), 20U); ++i)
            Ask([i](CZVLGBlockReader& asked) { return UseGeo(asked, i); }, reader);
    });
    const bool isInThreads = std::accumulate(file.begin(), file.end(), 0U) % 16 == 0;
    isInThreads ? Verified(file) : VerifiedAlone(file);
}

}  // namespace support
