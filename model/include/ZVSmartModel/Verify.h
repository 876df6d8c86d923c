#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ZVSmartFormat/Stream.h"
#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Values.h"

namespace ZVSmartModel {

/// How much a block file holds.
struct BlockCounts {
    /// Of the file; components of all floors.
    /// @{
    std::uint64_t floors = 0, components = 0;
    std::uint64_t geometryBlocks = 0, geometries = 0, identifications = 0;
    /// @}
};

/// Checks everything in the block file at `path`: decodes all of it, and checks as well what
/// reading tolerates, such as indices that lead nowhere and bytes behind the end. Returns what is
/// wrong, in the order in which it was met, at most a thousand; empty for a sound file. What is no
/// block file is damaged, too. Untrusted files are safe.
///
/// With more than one of `threads`, up to 64, they decode ahead of the calling one, two
/// blocks for each in memory; 0 takes as many as there are processors. What is returned does not
/// depend on them. `counts`, if given, is filled for a sound file.
///
/// Throws Error: InputOutput where the file cannot be opened or the system does not deliver it,
/// which tells nothing about the file; Internal where memory runs out; Cancelled.
ZVSM_API std::vector<Damage> VerifyFile(const std::string& path, const Progress& progress = {},
                                        unsigned int threads = 1, BlockCounts* counts = nullptr);

/// The same for the file that begins where `stream` stands and ends with it. `stream` is borrowed,
/// and stands there again afterwards.
ZVSM_API std::vector<Damage> VerifyFile(ZVSmartFormat::CZVFTInStream& stream,
                                        const Progress& progress = {}, unsigned int threads = 1,
                                        BlockCounts* counts = nullptr);

}  // namespace ZVSmartModel
