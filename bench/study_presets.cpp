// The coder's presets and dictionary caps on the blocks of real files: size and time.
//   study_presets FILE.zvg...
// Prints lines of: file, kind of block, preset, dictionary cap in KiB, encoded bytes,
// milliseconds to encode, milliseconds to decode (processor time, the median of three turns in
// which the settings alternate).

#include <time.h>

#include <algorithm>
#include <cstdio>

#include "bench/Payload.h"

using namespace bench;

namespace {

double NowMilliseconds() {
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) * 1e-6;
}

constexpr CoderSettings studied[] = {{0, 256 << 10}, {1, 1 << 20},
                                     {2, 2 << 20},   {3, 4 << 20},
                                     {4, 4 << 20},   {5, 4 << 20},
                                     {6, 64 << 10},  {6, 256 << 10},
                                     {6, 1 << 20},   {6, 4 << 20},
                                     {6, 8 << 20},   {7, 16 << 20},
                                     {9, 64 << 20},  {9U | 1U << 31, 4 << 20},
                                     floorSettings};
constexpr int turns = 3;

struct Result {
    std::size_t bytes = 0;
    std::vector<double> encode, decode;
};

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void Run(const std::vector<Bytes>& blocks, const CoderSettings& settings, Result& result) {
    result.bytes = 0;
    std::vector<Bytes> encoded;
    const double start = NowMilliseconds();
    for (const Bytes& block : blocks) encoded.push_back(Encoded(block, settings));
    const double between = NowMilliseconds();
    for (std::size_t i = 0; i < blocks.size(); ++i) Decoded(encoded[i], blocks[i].size());
    result.encode.push_back(between - start);
    result.decode.push_back(NowMilliseconds() - between);
    for (const Bytes& block : encoded) result.bytes += block.size();
}

void Study(const char* file, const char* kind, const std::vector<Block>& blocks) {
    const std::vector<Bytes> decoded = DecodedBlocks(blocks);
    std::vector<Result> results(std::size(studied));
    for (int turn = 0; turn < turns; ++turn)
        for (std::size_t i = 0; i < results.size(); ++i) Run(decoded, studied[i], results[i]);
    for (std::size_t i = 0; i < results.size(); ++i) {
        const char* variant = "";
        if (studied[i].asRecords) variant = " as records";
        if ((studied[i].preset & 1U << 31) != 0) variant = "e";
        std::printf("%s\t%s\t%u%s\t%u\t%zu\t%.1f\t%.2f\n", file, kind, studied[i].preset & 31,
                    variant, studied[i].dictionaryCap >> 10, results[i].bytes,
                    Median(results[i].encode), Median(results[i].decode));
    }
}

}  // namespace

int main(int argc, char** argv) {
    for (int arg = 1; arg < argc; ++arg) {
        const Bytes file = ReadWholeFile(argv[arg]);
        const FileParts parts = ReadFileParts(file);
        std::vector<Block> others = parts.floors;
        others.push_back(parts.index);
        const std::string path = argv[arg];
        const std::string name = path.substr(path.rfind('/') + 1);
        Study(name.c_str(), "geometry", parts.geos);
        Study(name.c_str(), "components", others);
    }
    return 0;
}
