#pragma once

#include <string>
#include <vector>

#include "bench/Coder.h"

namespace bench {

using ZVSmartFormat::u32;
using ZVSmartFormat::u64;
using ZVSmartFormat::u8;

Bytes ReadWholeFile(const std::string& path);
void WriteWholeFile(const std::string& path, View bytes);

/// One indexed section in memory: where its records begin, and where it ends.
struct Records {
    std::vector<u32> offsets;  ///< of the records, from the section's first byte
    u32 tableOffset = 0;
    u32 totalSize = 0;
};
Records ReadRecords(View section);

/// A compressed block of a file: its .xz stream in the file's bytes, and its decoded size.
struct Block {
    View encoded;
    std::size_t decodedSize = 0;
};

/// The compressed blocks of a sound block file, found without the library.
struct FileParts {
    std::vector<Block> geos;
    std::vector<Block> floors;
    Block index;

    std::vector<Block> All() const;
};
FileParts ReadFileParts(View file);

std::size_t LargestDecoded(const std::vector<Block>& blocks);
std::size_t TotalDecoded(const std::vector<Block>& blocks);
std::vector<Bytes> DecodedBlocks(const std::vector<Block>& blocks);

}  // namespace bench
