// One component and its geometry from an open file with empty caches, against liblzma decoding
// that floor's block and that geometry's block.

#include <memory>

#include "bench/OpenFile.h"
#include "bench/Pairs.h"
#include "bench/Payload.h"

using namespace bench;
using ZVSmartZvg::CZVLGBlockReader;
using ZVSmartZvg::SZVLGZvgGeoIndex;

namespace {

/// A component of `floor` whose geometry is here; ends the program where there is none.
u32 ComponentWithShape(CZVLGBlockReader& reader, u32 floor, std::wstring& identification) {
    for (u32 i = 0; i < reader.GetFloorCompNum(floor); ++i) {
        SZVLGZvgComp comp;
        reader.GetCompByIndex({floor, i}, comp);
        for (const auto& reference : comp.geoRefs) {
            if (reference.geoIds.empty()) continue;
            identification = GetGeoIdentification(reference.geoIds.front());
            SZVLGZvgGeo geo;
            if (reader.GetGeoByIdentification(identification, geo)) return i;
        }
    }
    std::fprintf(stderr, "cold_cost: no component with a geometry\n");
    std::exit(1);
}

u32 BlockOf(CZVLGBlockReader& reader, const std::wstring& wanted) {
    std::wstring identification;
    SZVLGZvgGeoIndex index;
    for (u32 i = 0; i < reader.GetGeoIdentificationNum(); ++i)
        if (reader.GetGeoIdentificationByIndex(i, identification, index) &&
            identification == wanted)
            return index.blockIndex;
    std::exit(1);
}

}  // namespace

int main(int argc, char** argv) {
    return RunPairs(argc, argv, [](const std::string& source) {
        const Payload payload = LoadPayload(source);
        const auto file = std::make_shared<OpenFile>(Written(payload, Part::both));
        u32 floor = 0;
        while (floor + 1 < file->reader.GetFloorNum() && file->reader.GetFloorCompNum(floor) < 2)
            ++floor;
        std::wstring identification;
        const u32 i = ComponentWithShape(file->reader, floor, identification);
        const FileParts parts = ReadFileParts(file->bytes);
        const std::vector<Block> blocks = {parts.floors[floor],
                                           parts.geos[BlockOf(file->reader, identification)]};
        const auto out = std::make_shared<Bytes>(LargestDecoded(blocks));
        RegisterPair(
            "cold", payload.name,
            [file, floor, i, identification] {
                file->reader.CleanInnerBuffer();
                SZVLGZvgComp comp;
                SZVLGZvgGeo geo;
                benchmark::DoNotOptimize(file->reader.GetCompByIndex({floor, i}, comp));
                benchmark::DoNotOptimize(file->reader.GetGeoByIdentification(identification, geo));
            },
            [file, blocks, out] {
                for (const Block& block : blocks)
                    benchmark::DoNotOptimize(DecodeInto(block.encoded, *out));
            });
    });
}
