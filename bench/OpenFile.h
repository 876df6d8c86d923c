#pragma once

#include <map>
#include <string>
#include <utility>

#include "ZVSmartFormat/MemoryStream.h"
#include "ZVSmartZvg/BlockReader.h"
#include "bench/FileParts.h"

namespace bench {

/// A block file in memory, open. Ends the program where it is none.
struct OpenFile {
    explicit OpenFile(Bytes content);
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    Bytes bytes;
    ZVSmartFormat::CZVFTReadBufferInStream in;
    ZVSmartZvg::CZVLGBlockReader reader;
};

/// The identifications of a file by block and position in it.
std::map<std::pair<u32, u32>, std::wstring> IdentificationsByPlace(
    ZVSmartZvg::CZVLGBlockReader& reader);

}  // namespace bench
