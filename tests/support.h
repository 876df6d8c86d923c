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

/// A text of `units` times `unit`, as it is stored.
Bytes TextOf(u32 units, char unit = 0);
/// Doubles as hex.
std::string Doubles(std::initializer_list<double> values);

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

/// A memory stream that counts what is asked of it. One of its calls may fail as a disk's do: a
/// read of at least a byte delivers nothing or a part or throws, or a seek throws.
struct FaultyInStream : CZVFTReadBufferInStream {
    enum Fault { refuses, shortens, throws, seekThrows };
    explicit FaultyInStream(const Bytes& file, Fault fault = refuses, long turn = -1)
        : CZVFTReadBufferInStream(file.data(), file.size()), fault(fault), turn(turn) {}
    bool Read(void* buffer, u64* byteCount) override;
    u64 GetPos() override { return ++calls, CZVFTReadBufferInStream::GetPos(); }
    int Seek(u64 newPos) override;
    u64 GetSize() override { return ++calls, CZVFTReadBufferInStream::GetSize(); }

    Fault fault;
    long turn;
    long calls = 0;
    bool hasFailed = false;
    bool isLost = false;  ///< it was the way back to the base that failed
    u64 failedAt = 0;
};

/// A host's own stream, which delivers what there is, and no more than `most` bytes at once.
struct HostInStream : CZVFTInStream {
    explicit HostInStream(const Bytes& bytes, u64 most = 0xFFFFFFFF) : bytes(bytes), most(most) {}
    bool Read(void* buffer, u64* byteCount) override;
    u64 GetPos() override { return pos; }
    int Seek(u64 newPos) override { return pos = newPos, 0; }
    u64 GetSize() override { return bytes.size(); }
    const Bytes& bytes;
    u64 most;
    u64 pos = 0;
};

/// A file that is gone with its object, with `content` some bytes behind its begin.
struct TempFile {
    explicit TempFile(const Bytes& content = {}, u64 base = 0);
    ~TempFile();
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;
    std::string path;
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

/// The n-th field of that name. Throws std::out_of_range where there is none.
const FieldSpan& FieldIn(const std::vector<FieldSpan>& spans, const std::string& name,
                         std::size_t n = 0);

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
namespace ask {
extern const Query preview, dataSize, floorCount, blockCount;
Query ListedName(u32 floor);  ///< of the list of all
Query FloorName(u32 floor);   ///< and its order
Query CompCount(u32 floor);
Query GeoCount(u32 block);
Query Comp(u32 floor, u32 i);
Query Geo(u32 block, u32 i);
Query Geo(const std::wstring& key);
Query Identification(u32 i);
}  // namespace ask
/// All questions about a file like the sample, a little beyond its ends.
const std::vector<Query>& Queries();
extern const std::string refused;
/// The answer, or `refused` where the reader threw its own exception.
std::string Ask(const Query& query, CZVLGBlockReader& reader);
std::vector<std::string> AskAll(CZVLGBlockReader& reader);
/// Opens the file at `in`'s position and asks everything.
std::vector<std::string> Answers(CZVFTInStream& in);
std::vector<std::string> Answers(const Bytes& file);

/// What hides behind a reader's last answer; the place and the reason are empty where none is told.
struct Miss {
    EZVLGMiss kind;
    u64 position;
    std::string reason;
};
Miss LastMissOf(CZVLGBlockReader& reader);

using Findings = std::vector<SZVLGBlockFinding>;
/// What the verifier tells of a file that begins some bytes into its stream, without threads and,
/// which is to be the same, with them.
Findings Verified(const Bytes& file, u64 base = 0);
/// The same without threads: to begin them takes longer than all the rest, so where thousands of
/// files differ in a byte one in many is verified with them.
Findings VerifiedAlone(const Bytes& file);

/// Asks everything about whatever `file` is, however many records it has, and verifies it.
void Exercise(const Bytes& file);

}  // namespace support
