#pragma once

#include <vector>

#include "ZVSmartFormat/Stream.h"
#include "ZVSmartZvg/BlockFinding.h"
#include "ZVSmartZvg/Export.h"

namespace ZVSmartZvg {

/// Checks a whole block file: decodes every block and every record and checks what the reader
/// tolerates as well (totals, order of offsets, gaps between structures, indices that lead
/// nowhere, order of identifications, bytes behind the end).
class ZVLG_API CZVLGBlockVerifier {
  public:
    /// Checks the file at `in`'s position and leaves the position as it was. Replaces `findings`
    /// by what is wrong, at most 1000 of them, in the order they were met. True where nothing is.
    /// Untrusted files are safe; what cannot be decoded is a finding, not an exception. Throws
    /// std::bad_alloc or CZVFTStreamException "bad malloc memory" or "bad relloc memory" where
    /// memory runs out; `findings` then holds what was found so far.
    bool Verify(ZVSmartFormat::CZVFTInStream* in, std::vector<SZVLGBlockFinding>& findings);
};

}  // namespace ZVSmartZvg
