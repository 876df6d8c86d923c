// What the number of geometries per block does to a file: its geometry blocks' bytes, and what
// one cold geometry costs.
//   study_block_sizes SOURCE...     as Payload.h tells
// Prints lines of: payload, geometries per block, their bytes decoded on average, the blocks' bytes
// encoded, milliseconds for a cold geometry (the average over geometries from all over the file,
// the median of seven turns).

#include <time.h>

#include <algorithm>
#include <cstdio>

#include "ZVSmartZvg/BlockReader.h"
#include "bench/Payload.h"

using namespace bench;
using ZVSmartFormat::CZVFTReadBufferInStream;
using ZVSmartZvg::CZVLGBlockReader;

namespace {

double NowMilliseconds() {
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) * 1e-6;
}

double ColdMilliseconds(const Bytes& file, const Payload& payload) {
    constexpr std::size_t probes = 16;
    constexpr int turns = 7;
    CZVFTReadBufferInStream in(file.data(), file.size());
    CZVLGBlockReader reader;
    if (!reader.Init(&in)) std::exit(1);
    const std::size_t step = std::max<std::size_t>(payload.geos.size() / probes, 1);
    std::vector<double> averages;
    for (int turn = 0; turn < turns; ++turn) {
        double spent = 0;
        int count = 0;
        for (std::size_t i = step / 2; i < payload.geos.size(); i += step, ++count) {
            reader.CleanInnerBuffer();
            const double start = NowMilliseconds();
            SZVLGZvgGeo geo;
            reader.GetGeoByIdentification(payload.geos[i].first, geo);
            spent += NowMilliseconds() - start;
        }
        averages.push_back(spent / count);
    }
    std::sort(averages.begin(), averages.end());
    return averages[turns / 2];
}

void Study(Payload& payload, u32 geosPerBlock) {
    payload.geosPerBlock = geosPerBlock;
    const Bytes file = Written(payload, Part::geometry);
    const FileParts parts = ReadFileParts(file);
    std::size_t encoded = 0;
    for (const Block& block : parts.geos) encoded += block.encoded.size() + 4;
    std::printf("%s\t%u\t%zu\t%zu\t%.3f\n", payload.name.c_str(), geosPerBlock,
                TotalDecoded(parts.geos) / parts.geos.size(), encoded,
                ColdMilliseconds(file, payload));
}

}  // namespace

int main(int argc, char** argv) {
    for (int arg = 1; arg < argc; ++arg) {
        Payload payload = LoadPayload(argv[arg]);
        const FileParts parts = [&payload] {
            const Bytes file = Written(payload, Part::geometry);
            FileParts sizes = ReadFileParts(file);
            for (Block& block : sizes.geos) block.encoded = {};
            return sizes;
        }();
        const std::size_t average =
            std::max<std::size_t>(TotalDecoded(parts.geos) / payload.geos.size(), 1);
        Study(payload, 1);
        for (const std::size_t wanted : {64U << 10, 256U << 10, 512U << 10, 1U << 20}) {
            const std::size_t count = std::max<std::size_t>(wanted / average, 1);
            if (count < payload.geos.size()) Study(payload, static_cast<u32>(count));
        }
        Study(payload, static_cast<u32>(payload.geos.size()));
    }
    return 0;
}
