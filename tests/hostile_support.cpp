#include "hostile_support.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "ZVSmartLzma/LzmaTool.h"
#include "ZVSmartSerial/Serial.h"

namespace Hostile {

using ZVSmartFormat::AllocBuffer;
using ZVSmartFormat::CZVFTAllocBufferOutStream;
using ZVSmartLzma::CZVFTLzmaTool;
using ZVSmartSerial::CZVFTSerialReader;
using ZVSmartSerial::CZVFTSerialWriter;

namespace {

/// A buffer that is freed, its stream and the bytes written so far.
struct Sink {
    Sink() = default;
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;
    ~Sink() { std::free(buffer.data); }
    const u8* Begin() { return buffer.data; }
    const u8* End() { return buffer.data + stream.GetPos(); }

    AllocBuffer buffer;
    CZVFTAllocBufferOutStream stream{&buffer};
};

/// Appends values of every kind to a dump, each list behind its length.
struct Dumper {
    Sink sink;
    CZVFTSerialWriter writer{&sink.stream};

    template <class... Values>
    Dumper& operator()(const Values&... values) {
        (Put(values), ...);
        return *this;
    }
    std::string Text() { return {sink.Begin(), sink.End()}; }

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

Bytes Slice(const Bytes& bytes, u64 begin, u64 end) {
    return {bytes.begin() + static_cast<std::ptrdiff_t>(begin),
            bytes.begin() + static_cast<std::ptrdiff_t>(end)};
}

/// Cuts a file into its fields, one after another.
struct Cutter {
    explicit Cutter(const Bytes& file) : file(file), stream(file.data(), file.size()) {}

    NamedBytes Fixed(const char* name, u64 byteCount) {
        const u64 begin = stream.GetPos();
        stream.Seek(begin + byteCount);
        return {name, Slice(file, begin, begin + byteCount)};
    }
    NamedBytes Text(const char* name) {
        const u64 units = CZVFTSerialReader(&stream).ReadU32();
        stream.Seek(stream.GetPos() - 4);
        return Fixed(name, 4 + 2 * units);
    }
    /// The positions of a section's records; moves behind the section.
    std::vector<u64> Records() {
        CZVFTSerialReader reader(&stream);
        const u64 start = stream.GetPos();
        const u8 width = reader.ReadU8();
        const u32 totalSize = reader.ReadU32();
        const u32 count = reader.ReadU32();
        stream.Seek(start + reader.ReadU32());
        std::vector<u64> positions;
        for (u32 i = 0; i < count && positions.size() < 100; ++i)
            positions.push_back(start + (width < 0x40   ? reader.ReadU8()
                                         : width < 0x80 ? reader.ReadU16()
                                                        : reader.ReadU32()));
        stream.Seek(start + totalSize);
        return positions;
    }
    bool DecodeAt(u64 position, Block& block) {
        constexpr u64 largest = 1 << 20;
        stream.Seek(position);
        const u32 blockSize = CZVFTSerialReader(&stream).ReadU32();
        Sink sink;
        if (!CZVFTLzmaTool::Decode(&stream, &sink.stream, largest)) return false;
        block.content.assign(sink.Begin(), sink.End());
        block.encoded = Slice(file, position + 4, stream.GetPos());
        return blockSize == 4 + block.encoded.size();
    }

    const Bytes& file;
    CZVFTReadBufferInStream stream;
};

bool Cut(Cutter& cutter, Parts& parts) {
    parts.head = {cutter.Fixed("magic", 9), cutter.Fixed("version", 4), cutter.Text("firstText"),
                  cutter.Text("secondText"), cutter.Fixed("flags", 1)};
    const u8 flags = parts.head.back().bytes[0];
    if (flags & 0x40) parts.head.push_back(cutter.Fixed("optionalValue", 4));
    if (flags & 0x80) parts.head.push_back(cutter.Text("optionalText"));
    if (flags & 0x20) parts.head.push_back(cutter.Fixed("transf", 100));
    cutter.Fixed("floorSectionOffset", 4);
    for (const u64 position : cutter.Records()) {
        const u64 behind = cutter.stream.GetPos();
        if (!cutter.DecodeAt(position, parts.geoBlocks.emplace_back())) return false;
        cutter.stream.Seek(behind);
    }
    for (const u64 position : cutter.Records()) {
        const u64 behind = cutter.stream.GetPos();
        cutter.stream.Seek(position);
        FloorRecord floor;
        floor.fields = {cutter.Text("floor name"), cutter.Fixed("floor order", 4),
                        cutter.Fixed("floor values", 16)};
        if (!cutter.DecodeAt(cutter.stream.GetPos(), floor.block)) return false;
        parts.floors.push_back(std::move(floor));
        cutter.stream.Seek(behind);
    }
    return cutter.DecodeAt(cutter.stream.GetPos(), parts.index);
}

void Append(Bytes& bytes, const Bytes& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

Bytes Framed(const Block& block) {
    if (block.encoded.empty()) block.encoded = Encoded(block.content);
    Bytes bytes;
    PutU32(bytes, static_cast<u32>(4 + block.encoded.size()));
    Append(bytes, block.encoded);
    return bytes;
}

}  // namespace

std::string Dump(const SZVLGZvgGeo& geo) {
    return Dumper()(geo).Text();
}
std::string Dump(const SZVLGZvgComp& comp) {
    return Dumper()(comp).Text();
}
std::string Dump(const SZVLGZvgBlockHeadInfo& head) {
    return Dumper()(head.firstText, head.secondText, static_cast<u32>(head.optionalValue),
                    head.optionalText, head.transf, head.flags)
        .Text();
}

Bytes Written(const std::vector<SaverStep>& steps, unsigned int version) {
    Sink sink;
    CZVLGBlockSaver saver(version);
    for (const SaverStep& step : steps) step(saver, sink.stream);
    return {sink.Begin(), sink.End()};
}

std::vector<Block*> Parts::Blocks() {
    std::vector<Block*> blocks;
    for (Block& block : geoBlocks) blocks.push_back(&block);
    for (FloorRecord& floor : floors) blocks.push_back(&floor.block);
    blocks.push_back(&index);
    return blocks;
}

bool TakeApart(const Bytes& file, Parts& parts) {
    try {
        Cutter cutter(file);
        return Cut(cutter, parts);
    } catch (const CZVFTStreamException&) {
        return false;
    }
}

Bytes SectionOf(const std::vector<Bytes>& records, const std::string& name,
                std::vector<FieldSpan>* spans, std::size_t position) {
    std::size_t size = 13;
    for (const Bytes& record : records) size += record.size();
    const unsigned width = size < 0x100 ? 1 : size < 0x10000 ? 2 : 4;
    Bytes bytes(1, static_cast<u8>(width == 1 ? 0 : width == 2 ? 0x40 : 0x80));
    PutU32(bytes, static_cast<u32>(size + width * records.size()));
    PutU32(bytes, static_cast<u32>(records.size()));
    PutU32(bytes, static_cast<u32>(size));
    Bytes table;
    for (const Bytes& record : records) {
        Bytes entry;
        PutU32(entry, static_cast<u32>(bytes.size()));
        table.insert(table.end(), entry.end() - width, entry.end());
        Append(bytes, record);
    }
    if (spans != nullptr) {
        const std::size_t p = position;
        spans->insert(spans->end(), {{name + " tableWidth", p, p + 1},
                                     {name + " totalSize", p + 1, p + 5},
                                     {name + " count", p + 5, p + 9},
                                     {name + " tableOffset", p + 9, p + 13},
                                     {name + " offsets", p + size, p + size + table.size()}});
    }
    Append(bytes, table);
    return bytes;
}

Bytes PutTogether(const Parts& parts, std::vector<FieldSpan>* spans) {
    Bytes file;
    const auto mark = [&](const std::string& name, std::size_t begin, std::size_t byteCount) {
        if (spans != nullptr) spans->push_back({name, begin, begin + byteCount});
    };
    for (const NamedBytes& field : parts.head) {
        mark(field.name, file.size(), field.bytes.size());
        Append(file, field.bytes);
    }
    std::vector<Bytes> geos, floors;
    for (const Block& block : parts.geoBlocks) geos.push_back(Framed(block));
    for (const FloorRecord& floor : parts.floors) {
        Bytes& record = floors.emplace_back();
        for (const NamedBytes& field : floor.fields) Append(record, field.bytes);
        Append(record, Framed(floor.block));
    }
    mark("floorSectionOffset", file.size(), 4);
    const std::size_t geoStart = file.size() + 4;
    const Bytes geoSection = SectionOf(geos, "geometry section", spans, geoStart);
    PutU32(file, static_cast<u32>(geoStart + geoSection.size()));
    Append(file, geoSection);
    std::size_t position = geoStart + 13;
    for (const Bytes& geo : geos) {
        mark("blockSize", position, 4);
        position += geo.size();
    }
    position = file.size() + 13;
    for (std::size_t i = 0; i < floors.size(); ++i) {
        std::size_t field = position;
        for (const NamedBytes& named : parts.floors[i].fields) {
            mark(named.name, field, named.bytes.size());
            field += named.bytes.size();
        }
        mark("blockSize", field, 4);
        position += floors[i].size();
    }
    Append(file, SectionOf(floors, "floor section", spans, file.size()));
    mark("blockSize", file.size(), 4);
    Append(file, Framed(parts.index));
    return file;
}

Bytes Encoded(const Bytes& content) {
    CZVFTReadBufferInStream in(content.data(), content.size());
    Sink sink;
    const ZVSmartLzma::CZVFTEncodeOpt quick{0, 4096};
    CZVFTLzmaTool::Encode(&in, &sink.stream, &quick);
    return {sink.Begin(), sink.End()};
}

void PutU32(Bytes& bytes, u32 value) {
    bytes.resize(bytes.size() + 4);
    SetU32(bytes, bytes.size() - 4, value);
}

void SetU32(Bytes& bytes, std::size_t position, u32 value) {
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes[position++] = static_cast<u8>(value >> shift);
}

}  // namespace Hostile
