// Writes a generated building to a block file.
//   make_building N FILE GEOS_PER_BLOCK [fast|default] [THREADS]

#include <cstring>

#include "ZVSmartFormat/FileStream.h"
#include "ZVSmartZvg/BlockSaver.h"
#include "bench/Payload.h"

using namespace bench;

int main(int argc, char** argv) {
    if (argc < 4) return 2;
    if (argc > 4 && std::strcmp(argv[4], "fast") == 0)
        ZVSmartZvg::CZVLGBlockSaver().SetEncodeFastMod(true);
    ZVSmartFormat::CZVFTFileOutStream out(argv[2]);
    if (!out.Open()) return 3;
    const u32 count = static_cast<u32>(std::stoul(argv[1]));
    WriteBuilding(Building(count), out, static_cast<u32>(std::stoul(argv[3])),
                  argc > 5 ? static_cast<unsigned int>(std::stoul(argv[5])) : 1);
    return 0;
}
