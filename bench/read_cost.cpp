// The reader's time for everything in a file, against liblzma's for decoding the same blocks.

#include <memory>

#include "ZVSmartZvg/BlockReader.h"
#include "bench/Pairs.h"
#include "bench/Payload.h"

using namespace bench;
using ZVSmartFormat::CZVFTReadBufferInStream;
using ZVSmartZvg::CZVLGBlockReader;

namespace {

void ReadAll(const Bytes& file) {
    CZVFTReadBufferInStream in(file.data(), file.size());
    CZVLGBlockReader reader;
    reader.Init(&in);
    for (u32 block = 0; block < reader.GetGeoBlockNum(); ++block) {
        for (u32 i = 0; i < reader.GetGeoNumInBlock(block); ++i) {
            SZVLGZvgGeo geo;
            benchmark::DoNotOptimize(reader.GetGeoByIndex({block, i}, geo));
        }
    }
    SZVLGZvgComp comp;  // one for all, as a host's loop would have it
    for (u32 floor = 0; floor < reader.GetFloorNum(); ++floor) {
        for (u32 i = 0; i < reader.GetFloorCompNum(floor); ++i) {
            benchmark::DoNotOptimize(reader.GetCompByIndex({floor, i}, comp));
        }
    }
}

void RegisterPart(const Payload& payload, Part part) {
    const auto file = std::make_shared<Bytes>(Written(payload, part));
    const auto blocks = std::make_shared<std::vector<Block>>(ReadFileParts(*file).All());
    const auto out = std::make_shared<Bytes>(LargestDecoded(*blocks));
    RegisterPair(
        std::string("read.") + PartName(part), payload.name, [file] { ReadAll(*file); },
        [file, blocks, out] {
            for (const Block& block : *blocks)
                benchmark::DoNotOptimize(DecodeInto(block.encoded, *out));
        });
}

/// What no reader can do without: the decoding, and making and freeing the records' own memory,
/// here by copying records that are there. Not a target; the least that the pair above can reach.
void RegisterFloor(const std::shared_ptr<Payload>& payload) {
    const auto file = std::make_shared<Bytes>(Written(*payload, Part::components));
    const auto blocks = std::make_shared<std::vector<Block>>(ReadFileParts(*file).All());
    const auto out = std::make_shared<Bytes>(LargestDecoded(*blocks));
    const auto decode = [file, blocks, out] {
        for (const Block& block : *blocks)
            benchmark::DoNotOptimize(DecodeInto(block.encoded, *out));
    };
    RegisterPair(
        "read.components-least", payload->name,
        [payload, decode] {
            decode();
            for (const SZVLGZvgComp& comp : payload->comps) {
                SZVLGZvgComp copy = comp;
                benchmark::DoNotOptimize(copy);
            }
        },
        decode);
}

}  // namespace

int main(int argc, char** argv) {
    return RunPairs(argc, argv, [](const std::string& source) {
        const auto payload = std::make_shared<Payload>(LoadPayload(source));
        RegisterPart(*payload, Part::geometry);
        RegisterPart(*payload, Part::components);
        RegisterFloor(payload);
    });
}
