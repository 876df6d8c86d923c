#pragma once

// What the tests and the fuzzers share: bytes as hex, files to and from memory, files taken apart
// and put together again by code that knows nothing of the library's own, a small rich sample and
// everything that a reader says about a file.

#include <cstdlib>
#include <functional>
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

constexpr std::size_t mebibyte = 1 << 20;

/// "0A ff" as bytes; blanks do not count.
Bytes FromHex(const std::string& hex);
std::string ToHex(const Bytes& bytes);
/// Hex in the form of `ToHex`.
std::string Plain(const std::string& hex);
Bytes operator+(Bytes a, const Bytes& b);
/// Throws std::out_of_range where the bytes are not there; so does `NumberAt`.
Bytes Slice(const Bytes& bytes, std::size_t from, std::size_t to);
/// Numbers are big-endian.
u32 NumberAt(const Bytes& bytes, std::size_t at, u32 width = 4);
Bytes BigEndian(u32 number);
void PutU32(Bytes& bytes, u32 value);
void SetU32(Bytes& bytes, std::size_t position, u32 value);

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

/// A reader over bytes in memory, which lie in a buffer of exactly their size: a sanitizer sees
/// every byte read past it.
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
    Table(const Bytes& bytes, std::size_t start);
    Bytes Record(const Bytes& bytes, std::size_t i) const {
        return Slice(bytes, at.at(i), at.at(i + 1));
    }
    u32 count;
    std::size_t end;
    std::vector<std::size_t> at;  // where records begin, and where the last one ends
};

/// Where a named field is in a file.
struct FieldSpan {
    std::string name;
    std::size_t begin, end;
};

/// An indexed section around records. The spans are of its fields, as if it began at `position`.
Bytes Section(const std::vector<Bytes>& records, const std::string& name = "",
              std::vector<FieldSpan>* spans = nullptr, std::size_t position = 0);

/// A compressed block; compressed anew where `encoded` is empty.
struct Block {
    Bytes content;
    mutable Bytes encoded;
};
struct NamedBytes {
    const char* name;
    Bytes bytes;
};
struct FloorRecord {
    std::vector<NamedBytes> fields;
    Block block;
};
/// A file, taken apart.
struct Parts {
    std::vector<NamedBytes> head;
    std::vector<Block> geoBlocks;
    std::vector<FloorRecord> floors;
    Block index;

    std::vector<Block*> Blocks();
};

/// False where `file` is not whole, whatever it holds.
bool TakeApart(const Bytes& file, Parts& parts);
/// Throws std::logic_error where `file` is not whole.
Parts PartsOf(const Bytes& file);
Bytes PutTogether(const Parts& parts, std::vector<FieldSpan>* spans = nullptr);
/// As the .xz format counts it.
u32 Crc32(const u8* bytes, std::size_t byteCount);
Bytes Encoded(const Bytes& content, const ZVSmartLzma::CZVFTEncodeOpt* opt = nullptr);
/// A block as a saver writes it.
Bytes Framed(const Bytes& content);
/// A file with the default head info, of decoded geometry blocks, floor records as they are
/// stored and a decoded index block.
Bytes FileOf(unsigned int version, const std::vector<Bytes>& geoBlocks,
             const std::vector<Bytes>& floors, const Bytes& index);

/// Every component of a file, floor by floor.
std::vector<SZVLGZvgComp> AllComps(const Bytes& file);
/// The serial form of a record.
Bytes RecordBytes(unsigned int version, const SZVLGZvgGeo& geo);

/// Some geometry that takes `value` along.
SZVLGZvgGeo SomeGeo(u64 value);
u64 ValueOf(const SZVLGZvgGeo& geo);
/// Moves by (1, 2, 3).
CZVIMTransf Shifted();
SZVLGZvgGeoBlob SomeBlob(u32 byteCount);
SZVLGZvgGeoImage SomeImage(u32 width, u32 height);
SZVLGZvgComp Comp(const SerialKey& key, const std::wstring& floor = L"F");
/// Attributes and a component of which every field differs from its default, and a record with
/// something in every list.
SZVLGZvgDisplayAttr FullAttr();
SZVLGZvgComp FullComp();
SZVLGZvgGeo FullGeo();

/// A saver's call for each kind of face, under one name.
inline bool Relate(CZVLGBlockSaver& saver, const SZVLGParamCylinderFace& face,
                   SZVLGZvgGeoRelInclude& rel) {
    return saver.GetRelIncludeByCylinderFace(face, rel);
}
inline bool Relate(CZVLGBlockSaver& saver, const SZVLGParamRevolvedFace& face,
                   SZVLGZvgGeoRelInclude& rel) {
    return saver.GetRelIncludeByRevolvedFace(face, rel);
}
inline bool Relate(CZVLGBlockSaver& saver, const SZVLGParamRuledFace& face,
                   SZVLGZvgGeoRelInclude& rel) {
    return saver.GetRelIncludeByRuledFace(face, rel);
}

/// The calls that make the sample, one after another; each stands for itself.
using SaverStep = std::function<void(CZVLGBlockSaver&, CZVFTOutStream&)>;
const std::vector<SaverStep>& SampleSteps();
/// The sample's geometry "geo `number`", the full one at 0.
SZVLGZvgGeo SampleGeo(u32 number);
/// Two floors, three components, four geometries in two blocks, a preview; below 4 KiB.
Bytes SampleFile(unsigned int version);

/// A record as bytes: equal records give equal bytes.
std::string Dump(const SZVLGZvgGeo& geo);
std::string Dump(const SZVLGZvgComp& comp);

/// One question to a reader and its answer: empty where it is neutral, a number behind '#'.
using Query = std::function<std::string(CZVLGBlockReader&)>;
/// All questions about a file like the sample, a little beyond its ends.
const std::vector<Query>& Queries();
extern const std::string refused;
/// The answer, or `refused` where the reader threw its own exception.
std::string Ask(const Query& query, CZVLGBlockReader& reader);
/// Opens the file at `in`'s position and asks everything.
std::vector<std::string> Answers(CZVFTInStream& in);
std::vector<std::string> Answers(const Bytes& file);
/// Asks everything about whatever `file` is, however many records it has, and verifies it.
void Exercise(const Bytes& file);

}  // namespace support
