#pragma once

#include <vector>

#include "ZVSmartFormat/Stream.h"
#include "ZVSmartZvg/BlockFinding.h"
#include "ZVSmartZvg/Export.h"

namespace ZVSmartZvg {

/// How much a block file holds.
struct SZVLGBlockCounts {
    unsigned long long floors = 0;           ///< floors
    unsigned long long components = 0;       ///< components, of all floors
    unsigned long long geometryBlocks = 0;   ///< geometry blocks
    unsigned long long geometries = 0;       ///< records of these
    unsigned long long identifications = 0;  ///< identifications that lead to them
};

/// Checks a whole block file: decodes every block and every record and checks what the reader
/// tolerates as well: totals, order of offsets, gaps between structures, indices and rows that lead
/// nowhere, faces outside their points, identities that are stored twice, order of identifications,
/// bytes behind the end, and the seal where there is one.
class ZVLG_API CZVLGBlockVerifier {
  public:
    /// Checks the file at `in`'s position, which is to end where `in` ends, and leaves the position
    /// as it was. Replaces `findings` by what is wrong, at most 1000 of them, in the order they
    /// were met: one for one wound, with the number of what hangs on it. True where nothing is.
    ///
    /// Untrusted files are safe; what cannot be decoded is a finding, not an exception. Throws
    /// CZVFTStreamException "seek over buffer size" where `in` does not deliver bytes that its
    /// size says are there: that tells nothing about the file. Throws std::bad_alloc or
    /// CZVFTStreamException "bad malloc memory" or "bad relloc memory" where memory runs out.
    /// After a throw `findings` holds what was found so far, right or not.
    bool Verify(ZVSmartFormat::CZVFTInStream* in, std::vector<SZVLGBlockFinding>& findings);
    /// The same for a file of `byteCount` bytes that stands ahead of others in its stream. A seal
    /// counts among the file's bytes.
    bool Verify(ZVSmartFormat::CZVFTInStream* in, unsigned long long byteCount,
                std::vector<SZVLGBlockFinding>& findings);
    /// The same with `threads`, up to 64, that decode the next blocks while the calling thread
    /// checks one; a `byteCount` of all ones means all to the stream's end. The findings do not
    /// depend on threads, and `in` is read by the calling thread alone. With 0 or 1 no thread is
    /// ever begun. With more, two blocks for each are in memory, and no more once they take 64 MiB,
    /// encoded and decoded; a block of more than that is decoded when it is its turn.
    ///
    /// `counts`, if given, is filled; what it says of a file with findings means nothing.
    bool Verify(ZVSmartFormat::CZVFTInStream* in, unsigned long long byteCount,
                std::vector<SZVLGBlockFinding>& findings, unsigned int threads,
                SZVLGBlockCounts* counts = nullptr);
};

}  // namespace ZVSmartZvg
