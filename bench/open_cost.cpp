// The reader's Init, against liblzma decoding the index block. Each argument is a number of
// identifications.

#include <memory>

#include "ZVSmartZvg/BlockReader.h"
#include "bench/Pairs.h"
#include "bench/Payload.h"

using namespace bench;
using ZVSmartFormat::CZVFTReadBufferInStream;
using ZVSmartZvg::CZVLGBlockReader;
using ZVSmartZvg::CZVLGBlockSaver;

namespace {

Bytes FileOfIdentifications(u32 count) {
    MemorySink sink(64 << 20);
    CZVLGBlockSaver saver;
    saver.Init(&sink.Stream(), {});
    SZVLGZvgGeo geo;
    geo.pointLists.emplace_back();
    for (u32 i = 0; i < count; ++i) saver.AddIdentificationGeo(Building::ShapeKey(i), geo);
    saver.WriteEnd();
    const View view = sink.Written();
    return Bytes(view.begin(), view.end());
}

}  // namespace

int main(int argc, char** argv) {
    return RunPairs(argc, argv, [](const std::string& count) {
        const auto file =
            std::make_shared<Bytes>(FileOfIdentifications(static_cast<u32>(std::stoul(count))));
        const Block index = ReadFileParts(*file).index;
        const auto out = std::make_shared<Bytes>(index.decodedSize);
        RegisterPair(
            "open", "identifications-" + count,
            [file] {
                CZVFTReadBufferInStream in(file->data(), file->size());
                CZVLGBlockReader reader;
                benchmark::DoNotOptimize(reader.Init(&in));
            },
            [file, index, out] { benchmark::DoNotOptimize(DecodeInto(index.encoded, *out)); });
    });
}
