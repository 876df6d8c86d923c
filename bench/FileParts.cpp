#include "bench/FileParts.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

// docs/FORMAT.md tells the layout.

namespace bench {

namespace {

u32 U32At(View bytes, std::size_t at) {
    return u32{bytes[at]} << 24 | u32{bytes[at + 1]} << 16 | u32{bytes[at + 2]} << 8 |
           bytes[at + 3];
}

std::size_t SkipText(View file, std::size_t at) {
    return at + 4 + 2 * std::size_t{U32At(file, at)};
}

/// The position of `floorSectionOffset`.
std::size_t SkipHead(View file) {
    std::size_t at = SkipText(file, SkipText(file, 13));
    const u8 flags = file[at++];
    if (flags & 0x40) at += 4;
    if (flags & 0x80) at = SkipText(file, at);
    if (flags & 0x20) at += 4 + 12 * 8;
    return at;
}

Block BlockAt(View file, std::size_t at) {
    Block block;
    block.encoded = file.subspan(at + 4, U32At(file, at) - 4);
    block.decodedSize = DecodedSize(block.encoded);
    return block;
}

}  // namespace

Bytes ReadWholeFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        std::fprintf(stderr, "bench: cannot read %s\n", path.c_str());
        std::exit(3);
    }
    return Bytes(std::istreambuf_iterator<char>(file), {});
}

void WriteWholeFile(const std::string& path, View bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    if (file.flush()) return;
    std::fprintf(stderr, "bench: cannot write %s\n", path.c_str());
    std::exit(3);
}

Records ReadRecords(View section) {
    Records records;
    records.totalSize = U32At(section, 1);
    records.tableOffset = U32At(section, 9);
    const u32 width = section[0] < 0x40 ? 1 : section[0] < 0x80 ? 2 : 4;
    for (u32 i = 0; i < U32At(section, 5); ++i) {
        u32 offset = 0;
        for (u32 k = 0; k < width; ++k)
            offset = offset << 8 | section[records.tableOffset + i * width + k];
        records.offsets.push_back(offset);
    }
    return records;
}

std::vector<Block> FileParts::All() const {
    std::vector<Block> all = geos;
    all.insert(all.end(), floors.begin(), floors.end());
    all.push_back(index);
    return all;
}

FileParts ReadFileParts(View file) {
    FileParts parts;
    const std::size_t offsetAt = SkipHead(file);
    const std::size_t geosAt = offsetAt + 4, floorsAt = U32At(file, offsetAt);
    for (const u32 offset : ReadRecords(file.subspan(geosAt)).offsets)
        parts.geos.push_back(BlockAt(file, geosAt + offset));
    const Records floors = ReadRecords(file.subspan(floorsAt));
    for (const u32 offset : floors.offsets)
        parts.floors.push_back(BlockAt(file, SkipText(file, floorsAt + offset) + 4 + 16));
    parts.index = BlockAt(file, floorsAt + floors.totalSize);
    return parts;
}

std::size_t LargestDecoded(const std::vector<Block>& blocks) {
    std::size_t largest = 0;
    for (const Block& block : blocks) largest = std::max(largest, block.decodedSize);
    return largest;
}

std::size_t TotalDecoded(const std::vector<Block>& blocks) {
    std::size_t total = 0;
    for (const Block& block : blocks) total += block.decodedSize;
    return total;
}

std::vector<Bytes> DecodedBlocks(const std::vector<Block>& blocks) {
    std::vector<Bytes> decoded;
    for (const Block& block : blocks) decoded.push_back(Decoded(block.encoded, block.decodedSize));
    return decoded;
}

}  // namespace bench
