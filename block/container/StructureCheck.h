#pragma once

#include "geometry/GeoIdentTable.h"
#include "layout/SectionLocator.h"
#include "stream/CheckedInStream.h"

namespace ZVSmartZvg {

/// What does not fit in a file, and where in its stream. The texts end the program alive.
struct Misfit {
    u64 position = 0;
    const char* what = "";
    const char* reason = "";  ///< goes on about `what`
};

/// Whether the parts of a file that opened contradict each other: what can be told by a few small
/// reads, however large the file is. The position of `in` changes.
bool FindMisfit(ZVSmartFormat::CheckedInStream& in, const Section& geos, const Section& floors,
                u64 indexPosition, const GeoIdentTable& identifications, Misfit& misfit);

}  // namespace ZVSmartZvg
