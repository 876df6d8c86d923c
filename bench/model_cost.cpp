// The model library's time for all elements and all shapes of a file, against what must be done at
// the least: liblzma decoding the elements' blocks, the block library reading the geometry.

#include <memory>

#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Body.h"
#include "ZVSmartZvg/BlockReader.h"
#include "bench/Pairs.h"
#include "bench/Payload.h"

using namespace bench;
using namespace ZVSmartModel;
using ZVSmartFormat::CZVFTReadBufferInStream;
using ZVSmartZvg::CZVLGBlockReader;

namespace {

std::vector<std::uint8_t> BytesOf(const std::string& source) {
    if (!source.starts_with("building:")) return ReadWholeFile(source);
    return Written(LoadPayload(source), Part::both);
}

/// A file in memory, opened.
struct Opened {
    explicit Opened(const Bytes& bytes) : in(bytes.data(), bytes.size()), file(in, {true}) {}

    CZVFTReadBufferInStream in;
    BlockFile file;
};

void ReadElements(const Bytes& file) {
    std::size_t bytes = 0;
    Opened(file).file.ForEach({}, [&](const Element& element) {
        for (const Property& property : element.properties) bytes += property.value.size();
        return true;
    });
    benchmark::DoNotOptimize(bytes);
}

void ViewElements(const Bytes& file) {
    std::size_t bytes = 0;
    Opened(file).file.ForEachView({}, [&](const ElementView& element) {
        for (const PropertyView& property : element.properties) bytes += property.value.size();
        return true;
    });
    benchmark::DoNotOptimize(bytes);
}

void ReadScene(const Bytes& file) {
    benchmark::DoNotOptimize(ReadShapes(Opened(file).file));
}

/// The floors, decoded and kept by the block library, and nothing read of them.
void DecodeFloors(const Bytes& file) {
    CZVFTReadBufferInStream in(file.data(), file.size());
    CZVLGBlockReader reader;
    reader.Init(&in);
    for (u32 floor = 0; floor < reader.GetFloorNum(); ++floor) {
        benchmark::DoNotOptimize(reader.GetFloorCompNum(floor));
    }
}

/// All geometries, and all components without their properties.
void ReadGeometry(const Bytes& file) {
    CZVFTReadBufferInStream in(file.data(), file.size());
    CZVLGBlockReader reader;
    reader.Init(&in);
    for (u32 block = 0; block < reader.GetGeoBlockNum(); ++block) {
        for (u32 i = 0; i < reader.GetGeoNumInBlock(block); ++i) {
            SZVLGZvgGeo geo;
            benchmark::DoNotOptimize(reader.GetGeoByIndex({block, i}, geo));
        }
    }
    ZVSmartZvg::SZVLGZvgComp comp;
    ZVSmartZvg::SZVLGCompParts parts;
    parts.properties = false;
    for (u32 floor = 0; floor < reader.GetFloorNum(); ++floor) {
        for (u32 i = 0; i < reader.GetFloorCompNum(floor); ++i) {
            benchmark::DoNotOptimize(reader.GetCompPartsByIndex({floor, i}, parts, comp));
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    return RunPairs(argc, argv, [](const std::string& source) {
        const std::string name = source.substr(source.rfind('/') + 1);
        const auto file = std::make_shared<Bytes>(BytesOf(source));
        const FileParts parts = ReadFileParts(*file);
        std::vector<Block> blocks = parts.floors;
        blocks.push_back(parts.index);
        const auto out = std::make_shared<Bytes>(LargestDecoded(blocks));
        const auto decode = [file, blocks, out] {
            for (const Block& block : blocks)
                benchmark::DoNotOptimize(DecodeInto(block.encoded, *out));
        };
        RegisterPair(
            "model.views", name, [file] { ViewElements(*file); }, decode);
        RegisterPair(
            "model.views-fresh", name, [file] { ViewElements(*file); },
            [file] { DecodeFloors(*file); });
        RegisterPair(
            "model.elements", name, [file] { ReadElements(*file); }, decode);
        RegisterPair(
            "model.scene", name, [file] { ReadScene(*file); }, [file] { ReadGeometry(*file); });
    });
}
