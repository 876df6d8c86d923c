#include "bench/OpenFile.h"

#include <cstdio>
#include <cstdlib>

namespace bench {

OpenFile::OpenFile(Bytes content) : bytes(std::move(content)), in(bytes.data(), bytes.size()) {
    if (reader.Init(&in)) return;
    std::fputs("a file that is no block file\n", stderr);
    std::exit(1);
}

std::map<std::pair<u32, u32>, std::wstring> IdentificationsByPlace(
    ZVSmartZvg::CZVLGBlockReader& reader) {
    std::map<std::pair<u32, u32>, std::wstring> byPlace;
    for (u32 i = 0; i < reader.GetGeoIdentificationNum(); ++i) {
        std::wstring identification;
        ZVSmartZvg::SZVLGZvgGeoIndex index;
        reader.GetGeoIdentificationByIndex(i, identification, index);
        byPlace[{index.blockIndex, index.indexInBlock}] = identification;
    }
    return byPlace;
}

}  // namespace bench
