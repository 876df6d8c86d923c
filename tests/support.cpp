#include "support.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace support {

Bytes FromHex(const std::string& hex) {
    Bytes bytes;
    std::string digits;
    for (const char digit : hex)
        if (std::isspace(static_cast<unsigned char>(digit)) == 0) digits += digit;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes.push_back(static_cast<u8>(std::stoul(digits.substr(i, 2), nullptr, 16)));
    return bytes;
}

std::string ToHex(const Bytes& bytes) {
    constexpr char digits[] = "0123456789ABCDEF";
    std::string hex;
    for (const u8 byte : bytes) (hex += digits[byte >> 4]) += digits[byte & 15];
    return hex;
}

std::string Plain(const std::string& hex) {
    return ToHex(FromHex(hex));
}

Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

Bytes Slice(const Bytes& bytes, std::size_t from, std::size_t to) {
    if (from > to || to > bytes.size()) throw std::out_of_range("slice");
    return Bytes(bytes.data() + from, bytes.data() + to);
}

u32 NumberAt(const Bytes& bytes, std::size_t at, u32 width) {
    u32 number = 0;
    for (u32 i = 0; i < width; ++i) number = number << 8 | bytes.at(at + i);
    return number;
}

Bytes BigEndian(u32 number) {
    Bytes bytes;
    PutU32(bytes, number);
    return bytes;
}

void PutU32(Bytes& bytes, u32 value) {
    bytes.resize(bytes.size() + 4);
    SetU32(bytes, bytes.size() - 4, value);
}

void SetU32(Bytes& bytes, std::size_t position, u32 value) {
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes[position++] = static_cast<u8>(value >> shift);
}

Bytes TextOf(u32 units, char unit) {
    return BigEndian(units) + Bytes(2 * std::size_t{units}, static_cast<u8>(unit));
}

std::string Doubles(std::initializer_list<double> values) {
    Bytes bytes;
    for (const double value : values) {
        const u64 bits = std::bit_cast<u64>(value);
        bytes = bytes + BigEndian(static_cast<u32>(bits >> 32)) + BigEndian(static_cast<u32>(bits));
    }
    return ToHex(bytes);
}

bool FaultyInStream::Read(void* buffer, u64* byteCount) {
    ++calls;
    if (fault == seekThrows || *byteCount == 0 || turn-- != 0)
        return CZVFTReadBufferInStream::Read(buffer, byteCount);
    hasFailed = true;
    failedAt = pos;
    if (fault == throws) throw std::runtime_error("the disk is gone");
    *byteCount = fault == shortens ? *byteCount / 2 : 0;
    u64 part = *byteCount;
    CZVFTReadBufferInStream::Read(buffer, &part);
    return fault == shortens;
}

int FaultyInStream::Seek(u64 newPos) {
    ++calls;
    if (fault != seekThrows || turn-- != 0) return CZVFTReadBufferInStream::Seek(newPos);
    hasFailed = true;
    failedAt = newPos;
    isLost = newPos == 0;
    throw CZVFTStreamException("seek over buffer size");
}

bool HostInStream::Read(void* buffer, u64* byteCount) {
    *byteCount = std::min({*byteCount, most, pos < bytes.size() ? bytes.size() - pos : u64{0}});
    if (*byteCount != 0) std::copy_n(&bytes[pos], *byteCount, static_cast<u8*>(buffer));
    pos += *byteCount;
    return true;
}

TempFile::TempFile(const Bytes& content, u64 base) {
    static std::atomic<int> count{0};
    const std::string name = "zvg-" + std::to_string(getpid()) + "-" + std::to_string(++count);
    path = (std::filesystem::temp_directory_path() / name).string();
    std::ofstream(path, std::ios::binary)
        .seekp(std::streamoff(base))
        .write(reinterpret_cast<const char*>(content.data()), std::streamsize(content.size()));
}

TempFile::~TempFile() {
    std::filesystem::remove(path);
}

Table::Table(const Bytes& bytes, std::size_t start)
    : count(NumberAt(bytes, start + 5)), end(start + NumberAt(bytes, start + 1)) {
    const u32 width = bytes[start] == 0 ? 1 : bytes[start] == 0x40 ? 2 : 4;
    const std::size_t offsets = start + NumberAt(bytes, start + 9);
    for (std::size_t i = 0; i < count; ++i)
        at.push_back(start + NumberAt(bytes, offsets + i * width, width));
    at.push_back(offsets);
}

const FieldSpan& FieldIn(const std::vector<FieldSpan>& spans, const std::string& name,
                         std::size_t n) {
    for (const FieldSpan& span : spans)
        if (span.name == name && n-- == 0) return span;
    throw std::out_of_range(name);
}

Bytes Section(const std::vector<Bytes>& records, const std::string& name,
              std::vector<FieldSpan>* spans, std::size_t position) {
    std::size_t size = 13;
    for (const Bytes& record : records) size += record.size();
    const unsigned width = size < 0x100 ? 1 : size < 0x10000 ? 2 : 4;
    Bytes bytes(1, static_cast<u8>(width == 1 ? 0 : width == 2 ? 0x40 : 0x80)), table;
    PutU32(bytes, static_cast<u32>(size + width * records.size()));
    PutU32(bytes, static_cast<u32>(records.size()));
    PutU32(bytes, static_cast<u32>(size));
    bytes.reserve(size + width * records.size());
    for (const Bytes& record : records) {
        const Bytes entry = BigEndian(static_cast<u32>(bytes.size()));
        table.insert(table.end(), entry.end() - width, entry.end());
        bytes.insert(bytes.end(), record.begin(), record.end());
    }
    if (spans != nullptr) {
        const std::size_t p = position;
        spans->insert(spans->end(), {{name + " tableWidth", p, p + 1},
                                     {name + " totalSize", p + 1, p + 5},
                                     {name + " count", p + 5, p + 9},
                                     {name + " tableOffset", p + 9, p + 13},
                                     {name + " offsets", p + size, p + size + table.size()}});
    }
    return bytes + table;
}

std::vector<Block*> Parts::Blocks() {
    std::vector<Block*> blocks;
    for (Block& block : geoBlocks) blocks.push_back(&block);
    for (FloorRecord& floor : floors) blocks.push_back(&floor.block);
    blocks.push_back(&index);
    return blocks;
}

namespace {

void Require(bool condition) {
    if (!condition) throw std::out_of_range("a part that does not fill its place");
}

/// Cuts a file into its fields, one after another. What is not there is std::out_of_range.
struct Cutter {
    NamedBytes Fixed(const char* name, std::size_t byteCount) {
        pos += byteCount;
        return {name, Slice(file, pos - byteCount, pos)};
    }
    NamedBytes Text(const char* name) {
        return Fixed(name, 4 + 2 * std::size_t{NumberAt(file, pos)});
    }
    Block Decoded() {
        const std::size_t end = pos + NumberAt(file, pos);
        Block block = {{}, Slice(file, pos + 4, end)};
        CZVFTReadBufferInStream in(block.encoded.data(), block.encoded.size());
        block.content = Streamed(
            [&](CZVFTOutStream& out) { Require(CZVFTLzmaTool::Decode(&in, &out, mebibyte)); });
        Require(in.GetPos() == block.encoded.size());
        pos = end;
        return block;
    }
    /// Calls `cut` at each record of the section here, then moves behind the section.
    template <class Cut>
    void Records(Cut cut) {
        const Table table(file, pos);
        for (std::size_t i = 0; i < table.count; ++i) {
            pos = table.at[i];
            cut();
            Require(pos == table.at[i + 1]);
        }
        pos = table.end;
    }

    const Bytes& file;
    std::size_t pos = 0;
};

void Cut(Cutter cutter, Parts& parts) {
    parts.head = {cutter.Fixed("magic", 9), cutter.Fixed("version", 4), cutter.Text("firstText"),
                  cutter.Text("secondText"), cutter.Fixed("flags", 1)};
    const u8 flags = parts.head.back().bytes[0];
    if (flags & 0x40) parts.head.push_back(cutter.Fixed("optionalValue", 4));
    if (flags & 0x80) parts.head.push_back(cutter.Text("optionalText"));
    if (flags & 0x20) parts.head.push_back(cutter.Fixed("transf", 100));
    const u32 floorSection = NumberAt(cutter.Fixed("floorSectionOffset", 4).bytes, 0);
    cutter.Records([&] { parts.geoBlocks.push_back(cutter.Decoded()); });
    Require(cutter.pos == floorSection);
    cutter.Records([&] {
        FloorRecord& floor = parts.floors.emplace_back();
        floor.fields = {cutter.Text("floor name"), cutter.Fixed("floor order", 4),
                        cutter.Fixed("floor values", 16)};
        floor.block = cutter.Decoded();
    });
    parts.index = cutter.Decoded();
    Require(cutter.pos == cutter.file.size());
}

Bytes Framed(const Block& block) {
    constexpr ZVSmartLzma::CZVFTEncodeOpt quick{0, 4096};
    if (block.encoded.empty()) block.encoded = Encoded(block.content, &quick);
    return BigEndian(static_cast<u32>(4 + block.encoded.size())) + block.encoded;
}

}  // namespace

bool TakeApart(const Bytes& file, Parts& parts) {
    try {
        Cut({file}, parts = {});
        return true;
    } catch (const std::out_of_range&) {
    } catch (const CZVFTStreamException&) {
    }
    return false;
}

Parts PartsOf(const Bytes& file) {
    Parts parts;
    if (!TakeApart(file, parts)) throw std::logic_error("the file is not whole");
    return parts;
}

Bytes PutTogether(const Parts& parts, std::vector<FieldSpan>* spans) {
    Bytes file;
    const auto mark = [&](const std::string& name, std::size_t begin, std::size_t byteCount) {
        if (spans != nullptr) spans->push_back({name, begin, begin + byteCount});
        return begin + byteCount;
    };
    for (const NamedBytes& field : parts.head) {
        mark(field.name, file.size(), field.bytes.size());
        file = std::move(file) + field.bytes;
    }
    std::vector<Bytes> geos, floors;
    for (const Block& block : parts.geoBlocks) geos.push_back(Framed(block));
    std::size_t position = mark("floorSectionOffset", file.size(), 4);
    const Bytes geoSection = Section(geos, "geometry section", spans, position);
    PutU32(file, static_cast<u32>(position + geoSection.size()));
    file = std::move(file) + geoSection;
    position += 13;
    for (const Bytes& geo : geos) {
        mark("blockSize", position, 4);
        position += geo.size();
    }
    position = file.size() + 13;
    for (const FloorRecord& floor : parts.floors) {
        Bytes& record = floors.emplace_back();
        for (const NamedBytes& field : floor.fields) {
            position = mark(field.name, position, field.bytes.size());
            record = std::move(record) + field.bytes;
        }
        const Bytes framed = Framed(floor.block);
        mark("blockSize", position, 4);
        position += framed.size();
        record = std::move(record) + framed;
    }
    const Bytes floorSection = Section(floors, "floor section", spans, file.size());
    file = std::move(file) + floorSection;
    mark("blockSize", file.size(), 4);
    return std::move(file) + Framed(parts.index);
}

u32 Crc32(const u8* bytes, std::size_t byteCount) {
    u32 crc = 0xFFFFFFFF;
    for (std::size_t i = 0; i < byteCount; ++i) {
        crc ^= bytes[i];
        for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320 : 0);
    }
    return ~crc;
}

Bytes Encoded(const Bytes& content, const ZVSmartLzma::CZVFTEncodeOpt* opt) {
    CZVFTReadBufferInStream in(content.data(), content.size());
    return Streamed([&](CZVFTOutStream& out) { Require(CZVFTLzmaTool::Encode(&in, &out, opt)); });
}

Bytes Framed(const Bytes& content) {
    return Framed(Block{content, Encoded(content)});
}

Bytes FileOf(unsigned int version, const std::vector<Bytes>& geoBlocks,
             const std::vector<Bytes>& floors, const Bytes& index) {
    std::vector<Bytes> blocks;
    for (const Bytes& block : geoBlocks) blocks.push_back(Framed(block));
    const Bytes geos = Section(blocks);
    const Bytes head =
        FromHex("7A7667626C6F636B00") + BigEndian(version) + FromHex("00000000 00000000 00");
    return head + BigEndian(static_cast<u32>(head.size() + 4 + geos.size())) + geos +
           Section(floors) + Framed(index);
}

std::vector<SZVLGZvgComp> AllComps(const Bytes& file) {
    Opened opened(file);
    std::vector<SZVLGZvgComp> comps;
    for (u32 floor = 0; floor < opened.reader.GetFloorNum(); ++floor)
        for (u32 i = 0; i < opened.reader.GetFloorCompNum(floor); ++i)
            Require(opened.reader.GetCompByIndex({floor, i}, comps.emplace_back()));
    return comps;
}

Bytes RecordBytes(unsigned int version, const SZVLGZvgGeo& geo) {
    const Bytes block =
        PartsOf(Saved(version, 0,
                      [&](CZVLGBlockSaver& saver) { saver.AddIdentificationGeo(L"k", geo); }))
            .geoBlocks.at(0)
            .content;
    const Bytes record = Table(block, 0).Record(block, 0);
    Require(NumberAt(record, 0) == record.size() - 4);
    return Slice(record, 4, record.size());
}

}  // namespace support
