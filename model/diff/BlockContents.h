#pragma once

#include <string>
#include <vector>

#include "ZVSmartZvg/CompIndex.h"
#include "model/element/OpenedBlock.h"
#include "model/element/ProgressPace.h"

namespace ZVSmartModel {

/// A floor as it is compared.
struct FloorEntry {
    std::string name;  ///< UTF-8
    ZVSmartZvg::u32 order = 0;
    ZVSmartZvg::u64 dataA = 0, dataB = 0;
};

/// A component as it is compared: where it is and what stands for all it holds.
struct CompEntry {
    std::string key;  ///< its name or its GUID
    ZVSmartZvg::SZVLGCompIndex index;
    unsigned int floor = 0;  ///< its floor's number among the floors of both files
    ZVSmartZvg::u64 aspects = 0;
    ZVSmartZvg::u64 geometry = 0;
};

struct BlockContents {
    std::vector<FloorEntry> floors;
    std::vector<CompEntry> components;  ///< in the file's order
};

/// Reads a whole file once. Throws Error: Damaged for whatever cannot be read; Cancelled. Takes
/// memory for the keys of the components and of the geometries, and charges it to the block's
/// budget.
BlockContents ReadContents(OpenedBlock& block, ProgressPace& pace);

}  // namespace ZVSmartModel
