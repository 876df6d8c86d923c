#pragma once

// What the tests of the format share: bytes as hex, files to and from memory, and a small parser
// of indexed sections that knows nothing of the library's own.

#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "ZVSmartFormat/MemoryStream.h"
#include "ZVSmartFormat/StreamException.h"
#include "ZVSmartLzma/LzmaTool.h"
#include "ZVSmartZvg/ZVSmartZvg.h"

namespace support {

using namespace ZVSmartZvg;
using ZVSmartFormat::AllocBuffer;
using ZVSmartFormat::CZVFTAllocBufferOutStream;
using ZVSmartFormat::CZVFTInStream;
using ZVSmartFormat::CZVFTOutStream;
using ZVSmartFormat::CZVFTReadBufferInStream;
using ZVSmartFormat::CZVFTStreamException;
using ZVSmartLzma::CZVFTLzmaTool;
using ZVSmartSerial::CZVFTSerialReader;
using ZVSmartSerial::CZVFTSerialWriter;
using Bytes = std::vector<u8>;

/// "0A ff" as bytes; blanks do not count.
inline Bytes FromHex(const std::string& hex) {
    Bytes bytes;
    std::string digits;
    for (const char digit : hex)
        if (std::isspace(static_cast<unsigned char>(digit)) == 0) digits += digit;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes.push_back(static_cast<u8>(std::stoul(digits.substr(i, 2), nullptr, 16)));
    return bytes;
}
inline std::string ToHex(const Bytes& bytes) {
    constexpr char digits[] = "0123456789ABCDEF";
    std::string hex;
    for (const u8 byte : bytes) (hex += digits[byte >> 4]) += digits[byte & 15];
    return hex;
}
/// Hex in the form of `ToHex`.
inline std::string Plain(const std::string& hex) {
    return ToHex(FromHex(hex));
}
inline Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}
inline Bytes Slice(const Bytes& bytes, std::size_t from, std::size_t to) {
    if (from > to || to > bytes.size()) throw std::out_of_range("slice");
    return Bytes(bytes.data() + from, bytes.data() + to);
}
inline u32 NumberAt(const Bytes& bytes, std::size_t at, u32 width = 4) {
    u32 number = 0;
    for (u32 i = 0; i < width; ++i) number = number << 8 | bytes.at(at + i);
    return number;
}
inline Bytes BigEndian(u32 number) {
    return {static_cast<u8>(number >> 24), static_cast<u8>(number >> 16),
            static_cast<u8>(number >> 8), static_cast<u8>(number)};
}

struct OwnedBuffer : AllocBuffer {
    OwnedBuffer() = default;
    OwnedBuffer(const OwnedBuffer&) = delete;
    OwnedBuffer& operator=(const OwnedBuffer&) = delete;
    ~OwnedBuffer() { std::free(data); }
};

/// What `write` puts on a memory stream.
template <class Write>
Bytes Streamed(Write write) {
    OwnedBuffer buffer;
    CZVFTAllocBufferOutStream out(&buffer);
    write(out);
    const u64 size = out.GetPos();
    return size == 0 ? Bytes() : Bytes(buffer.data, buffer.data + size);
}
template <class Write>
Bytes Serialised(Write write) {
    return Streamed([&](CZVFTOutStream& out) {
        CZVFTSerialWriter writer(&out);
        write(writer);
    });
}

/// The text of the exception that `act` throws; empty where it throws none.
template <class Act>
std::string Thrown(Act act) {
    try {
        act();
    } catch (const CZVFTStreamException& exception) {
        return exception.what();
    }
    return "";
}

struct SaveOptions {
    unsigned int version = 4;
    unsigned int geosPerBlock = 0;
    std::string iniPath;
    SZVLGZvgBlockHeadInfo head;
};

/// A whole file; `fill` gets the saver.
template <class Fill>
void SaveTo(CZVFTOutStream& out, const SaveOptions& options, Fill fill) {
    CZVLGBlockSaver saver(options.version);
    saver.Init(&out, options.head, options.iniPath, options.geosPerBlock);
    fill(saver);
    saver.WriteEnd();
}
template <class Fill>
Bytes Saved(const SaveOptions& options, Fill fill) {
    return Streamed([&](CZVFTOutStream& out) { SaveTo(out, options, fill); });
}
template <class Fill>
Bytes Saved(unsigned int version, unsigned int geosPerBlock, Fill fill) {
    return Saved(SaveOptions{version, geosPerBlock, "", {}}, fill);
}

/// A reader over bytes in memory.
struct Opened {
    explicit Opened(const Bytes& bytes, unsigned int geoLimit = 0, unsigned int floorLimit = 0)
        : file(bytes),
          stream(file.data(), file.size()),
          ok(reader.Init(&stream, geoLimit, floorLimit)) {}
    Bytes file;
    CZVFTReadBufferInStream stream;
    CZVLGBlockReader reader;
    bool ok;
};

/// An indexed section as its bytes say.
struct Table {
    Table(const Bytes& bytes, std::size_t start)
        : count(NumberAt(bytes, start + 5)), end(start + NumberAt(bytes, start + 1)) {
        const u32 width = bytes[start] == 0 ? 1 : bytes[start] == 0x40 ? 2 : 4;
        const std::size_t offsets = start + NumberAt(bytes, start + 9);
        for (u32 i = 0; i < count; ++i)
            at.push_back(start + NumberAt(bytes, offsets + i * width, width));
        at.push_back(offsets);
    }
    Bytes Record(const Bytes& bytes, std::size_t i) const {
        return Slice(bytes, at.at(i), at.at(i + 1));
    }
    u32 count;
    std::size_t end;
    std::vector<std::size_t> at;  // where records begin, and where the last one ends
};

/// An indexed section around records.
inline Bytes Section(const std::vector<Bytes>& records) {
    std::size_t table = 13;
    for (const Bytes& record : records) table += record.size();
    const u32 width = table < 0x100 ? 1 : table < 0x10000 ? 2 : 4;
    Bytes content, offsets;
    for (const Bytes& record : records) {
        const Bytes offset = BigEndian(static_cast<u32>(13 + content.size()));
        offsets = offsets + Slice(offset, 4 - width, 4);
        content = content + record;
    }
    return Bytes{static_cast<u8>(width == 1   ? 0
                                 : width == 2 ? 0x40
                                              : 0x80)} +
           BigEndian(static_cast<u32>(table + offsets.size())) +
           BigEndian(static_cast<u32>(records.size())) + BigEndian(static_cast<u32>(table)) +
           content + offsets;
}

/// A compressed block around `content`.
inline Bytes Block(const Bytes& content) {
    const Bytes payload = Streamed([&](CZVFTOutStream& out) {
        CZVFTReadBufferInStream in(content.data(), content.size());
        EXPECT_TRUE(CZVFTLzmaTool::Encode(&in, &out, nullptr));
    });
    return BigEndian(static_cast<u32>(payload.size() + 4)) + payload;
}
inline std::size_t BlockEnd(const Bytes& file, std::size_t at) {
    return at + NumberAt(file, at);
}
inline Bytes Decoded(const Bytes& file, std::size_t at) {
    return Streamed([&](CZVFTOutStream& out) {
        CZVFTReadBufferInStream in(file.data(), BlockEnd(file, at));
        in.Seek(at + 4);
        EXPECT_TRUE(CZVFTLzmaTool::Decode(&in, &out));
        EXPECT_EQ(in.GetPos(), BlockEnd(file, at)) << "the payload fills its block";
    });
}

/// The parts of a file whose head info is the default one.
struct Parts {
    static constexpr std::size_t offsetPos = 22;
    explicit Parts(const Bytes& file)
        : geoSection(file, offsetPos + 4),
          floorSection(file, NumberAt(file, offsetPos)),
          indexPos(floorSection.end) {
        EXPECT_EQ(geoSection.end, NumberAt(file, offsetPos));
        EXPECT_EQ(BlockEnd(file, indexPos), file.size());
        index = Decoded(file, indexPos);
        for (u32 i = 0; i < geoSection.count; ++i)
            geoBlocks.push_back(Decoded(file, geoSection.at[i]));
        for (u32 i = 0; i < floorSection.count; ++i) {
            const std::size_t at = floorSection.at[i];
            floorBlocks.push_back(Decoded(file, at + 24 + 2 * NumberAt(file, at)));
        }
    }
    Table geoSection, floorSection;
    std::size_t indexPos;
    Bytes index;
    std::vector<Bytes> geoBlocks, floorBlocks;
};

/// A file with the default head info, of decoded geometry blocks, floor records as they are
/// stored and a decoded index block.
inline Bytes FileOf(unsigned int version, const std::vector<Bytes>& geoBlocks,
                    const std::vector<Bytes>& floors, const Bytes& index) {
    std::vector<Bytes> blocks;
    for (const Bytes& block : geoBlocks) blocks.push_back(Block(block));
    const Bytes geos = Section(blocks);
    return FromHex("7A7667626C6F636B00") + BigEndian(version) + FromHex("00000000 00000000 00") +
           BigEndian(static_cast<u32>(Parts::offsetPos + 4 + geos.size())) + geos +
           Section(floors) + Block(index);
}

/// Every component of a file, floor by floor.
inline std::vector<SZVLGZvgComp> AllComps(const Bytes& file) {
    Opened opened(file);
    std::vector<SZVLGZvgComp> comps;
    for (u32 floor = 0; floor < opened.reader.GetFloorNum(); ++floor)
        for (u32 i = 0; i < opened.reader.GetFloorCompNum(floor); ++i) {
            comps.emplace_back();
            EXPECT_TRUE(opened.reader.GetCompByIndex({floor, i}, comps.back()));
        }
    return comps;
}

/// Some geometry that takes `value` along.
inline SZVLGZvgGeo SomeGeo(u64 value) {
    SZVLGZvgGeo geo;
    geo.pointLists = {{{}, value, 0}};
    return geo;
}
inline u64 ValueOf(const SZVLGZvgGeo& geo) {
    return geo.pointLists.size() == 1 ? geo.pointLists[0].valueA : ~u64{0};
}

/// The serial form of a record.
inline Bytes RecordBytes(unsigned int version, const SZVLGZvgGeo& geo) {
    const Bytes file =
        Saved(version, 0, [&](CZVLGBlockSaver& saver) { saver.AddIdentificationGeo(L"k", geo); });
    const Bytes block = Parts(file).geoBlocks.at(0);
    const Bytes record = Table(block, 0).Record(block, 0);
    EXPECT_EQ(NumberAt(record, 0), record.size() - 4);
    return Slice(record, 4, record.size());
}

inline u8* Malloced(const Bytes& bytes) {
    u8* const data = static_cast<u8*>(std::malloc(bytes.size()));
    std::memcpy(data, bytes.data(), bytes.size());
    return data;
}

/// Moves by (1, 2, 3).
inline CZVIMTransf Shifted() {
    CZVIMTransf transf;
    for (int row = 0; row < 3; ++row) transf.SetAt(row, 3, row + 1);
    return transf;
}

/// Attributes of which every field is there and differs from its default.
inline SZVLGZvgDisplayAttr FullAttr() {
    return {0xC6F0,     1,    2,  3,         4,         5,
            L"s",       6,    7,  8,         Shifted(), {{L"k", L"v"}, {L"k", L""}},
            0xF8FE0000, 9,    10, 11,        12,        L"2",
            1,          2,    3,  1,         2,         L"3",
            13,         14,   15, 16,        3,         L"f",
            3,          L"h", 2,  0xDEADBEEF};
}

inline SZVLGZvgGeoBlob SomeBlob(u32 byteCount) {
    SZVLGZvgGeoBlob blob;
    blob.str1 = L"a";
    blob.str3 = L"b";
    blob.dataSize = byteCount;
    blob.data = Malloced(Bytes(byteCount, 0xAB));
    blob.transf = Shifted();
    return blob;
}
inline SZVLGZvgGeoImage SomeImage(u32 width, u32 height) {
    SZVLGZvgGeoImage image;
    image.width = width;
    image.height = height;
    image.name = L"i";
    image.pixels = Malloced(Bytes(std::size_t{width} * height * 4 + 1, 0xCD));
    return image;
}

/// A record with something in every list.
inline SZVLGZvgGeo FullGeo() {
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

inline SZVLGZvgComp Comp(const SerialKey& key, const std::wstring& floor = L"F") {
    SZVLGZvgComp comp;
    comp.compGuidName = key;
    comp.classLevel1Name = floor;
    return comp;
}

/// A component of which every field differs from its default.
inline SZVLGZvgComp FullComp() {
    SZVLGZvgDisplayAttr attr4, compAttr;
    attr4.flags = 0x400;
    attr4.extraByte = 0x0B;
    compAttr.flags = 0x40;
    compAttr.zBufferSize = 6;
    const SerialGuid guid = {1, 0x0203, 0x0405, {6, 7, 8, 9, 10, 11, 12, 13}};
    const SZVLGZvgGeoId row = {L"i", L"t", L""};
    const std::map<u32, SZVLGZvgMaterial> materials = {{8, {}},
                                                       {7, {L"m", L"x", L"y", {{L"p", L"q"}}}}};
    return {L"F",
            2,
            0x0102030405060708,
            9,
            L"o",
            L"a",
            L"b",
            L"s",
            L"c",
            L"2",
            0x22,
            L"3",
            0x33,
            L"4",
            0x44,
            attr4,
            L"5",
            0x55,
            {},
            guid,
            {L"r", L"q"},
            L"g",
            {{L"k", L"v"}},
            {{L"", {}, 1, 2, 3, materials, {row, {L"none", L"j", L"u"}}},
             {L"", {}, 0, 0, 0, {}, {row}}},
            compAttr};
}

}  // namespace support
