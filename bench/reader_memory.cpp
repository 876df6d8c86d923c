// The reader's memory at its peak while everything in a file is read once, at the default limits
// of its caches and without the coder's own.
//   reader_memory FILE
// Prints: the peak, the index block, the three largest geometry blocks, the five largest floors,
// the largest block, in bytes.

#include <algorithm>
#include <cstdio>
#include <functional>

#include "ZVSmartFormat/FileStream.h"
#include "ZVSmartZvg/BlockReader.h"
#include "bench/MemoryCount.h"
#include "bench/Payload.h"

using namespace bench;
using ZVSmartZvg::CZVLGBlockReader;

namespace {

std::size_t LargestOf(const std::vector<Block>& blocks, std::size_t count) {
    std::vector<std::size_t> sizes;
    for (const Block& block : blocks) sizes.push_back(block.decodedSize);
    std::sort(sizes.begin(), sizes.end(), std::greater<>());
    std::size_t sum = 0;
    for (std::size_t i = 0; i < std::min(count, sizes.size()); ++i) sum += sizes[i];
    return sum;
}

void ReadAll(ZVSmartFormat::CZVFTInStream& in) {
    const AtWork work(Owner::library);
    CZVLGBlockReader reader;
    if (!reader.Init(&in)) std::exit(1);
    for (u32 block = 0; block < reader.GetGeoBlockNum(); ++block) {
        const u32 count = reader.GetGeoNumInBlock(block);
        for (u32 i = 0; i < count; ++i) {
            SZVLGZvgGeo geo;
            reader.GetGeoByIndex({block, i}, geo);
        }
    }
    for (u32 floor = 0; floor < reader.GetFloorNum(); ++floor) {
        const u32 count = reader.GetFloorCompNum(floor);
        for (u32 i = 0; i < count; ++i) {
            SZVLGZvgComp comp;
            reader.GetCompByIndex({floor, i}, comp);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const Bytes file = ReadWholeFile(argv[1]);
    const FileParts parts = ReadFileParts(file);
    ZVSmartFormat::CZVFTFileInStream in(argv[1]);
    if (!in.Open()) return 3;
    ResetPeak();
    ReadAll(in);
    std::printf("%zu\t%zu\t%zu\t%zu\t%zu\n", LibraryPeak(), parts.index.decodedSize,
                LargestOf(parts.geos, 3), LargestOf(parts.floors, 5), LargestDecoded(parts.All()));
    return 0;
}
