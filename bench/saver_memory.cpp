// The saver's memory at its peak, without the coder's and without its scratch buffer.
//   saver_memory components N      a building of N components and their shapes
//   saver_memory geometries N      N shapes and no component
// Prints: the peak, the components' stored bytes (floor blocks and index block, decoded), the
// largest block, in bytes. What the saver reads in and compresses from counts as the library's.

#include <cstdio>
#include <cstring>

#include "bench/MemoryCount.h"
#include "bench/Payload.h"

using namespace bench;
using ZVSmartZvg::CZVLGBlockSaver;

namespace {

/// The host makes what it adds, one at a time.
void Save(CZVLGBlockSaver& saver, ZVSmartFormat::CZVFTOutStream& out, const Building& building,
          bool withComponents) {
    const AtWork work(Owner::library);
    saver.Init(&out, {});
    saver.SetEncodeFastMod(true);
    u32 shapes = 0;
    for (u32 i = 0; i < building.ComponentCount(); ++i) {
        for (; shapes <= building.ShapeOf(i); ++shapes) {
            std::wstring key;
            SZVLGZvgGeo shape;
            {
                const AtWork making(Owner::host);
                key = Building::ShapeKey(shapes);
                shape = Building::Shape(shapes);
            }
            saver.AddIdentificationGeo(key, shape);
        }
        if (!withComponents) continue;
        SZVLGZvgComp comp;
        {
            const AtWork making(Owner::host);
            comp = building.Component(i);
        }
        saver.AddComp(comp);
    }
    saver.WriteEnd();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    const bool withComponents = std::strcmp(argv[1], "components") == 0;
    const u32 count = static_cast<u32>(std::stoul(argv[2]));
    // Ten components to a shape.
    const Building building(withComponents ? count : count * 10);
    MemorySink sink(64 << 20);
    {
        CZVLGBlockSaver saver;
        ResetPeak();
        Save(saver, sink.Stream(), building, withComponents);
    }
    const FileParts parts = ReadFileParts(sink.Written());
    std::printf("%zu\t%zu\t%zu\n", LibraryPeak(),
                TotalDecoded(parts.floors) + parts.index.decodedSize, LargestDecoded(parts.All()));
    return 0;
}
