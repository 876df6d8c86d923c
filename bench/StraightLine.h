#pragma once

#include "bench/FileParts.h"
#include "bench/Payload.h"

namespace bench {

/// A floor and the classes of a file, decoded, with every table's records looked up beforehand.
struct ParsedFloor {
    Bytes floor, index;
    std::wstring name;
    u32 order = 0;
    std::vector<const u8*> components, geoIds;
};

/// Component `i` of a floor of a generated building, with no checks, no versions and no choices
/// but those that its bytes need.
void ReadComponentStraight(const ParsedFloor& from, u32 i, SZVLGZvgComp& comp);

/// Whether the two records hold the same, as far as a generated building goes.
bool SameComponent(const SZVLGZvgComp& a, const SZVLGZvgComp& b);

}  // namespace bench
