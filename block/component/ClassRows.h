#pragma once

#include "ZVSmartZvg/Comp.h"
#include "component/ComponentFields.h"
#include "layout/SectionLocator.h"
#include "stream/RecordInStream.h"

namespace ZVSmartZvg {

/// Fills in what the classification tables hold for a component. `index` reads the decoded index
/// block, in which `level2` is the outermost table. A row number that leads nowhere leaves its
/// fields empty; false where there is one. Throws "seek over buffer size" where a row is damaged,
/// OverLimit where `budget` does not hold what the rows take.
bool ResolveClassRows(ZVSmartFormat::RecordInStream& index, const Section& level2,
                      const EntryRows& rows, unsigned int version, SZVLGZvgComp& comp,
                      ZVSmartFormat::MemoryBudget& budget);

}  // namespace ZVSmartZvg
