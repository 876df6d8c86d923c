#pragma once

#include <string>
#include <vector>

#include "ZVSmartModel/Diff.h"
#include "ZVSmartZvg/Comp.h"

namespace ZVSmartModel {

/// The digest of all that a component says but its key, its floor and its geometry. The ids of
/// classes are left out: they number a file's tables and change with whatever else is in it.
ZVSmartZvg::u64 AspectsDigest(const ZVSmartZvg::SZVLGZvgComp& comp);

/// What AspectsDigest tells apart.
struct CompDifference {
    std::vector<ValueChange> properties;  ///< properties of one name are compared in their order
    std::vector<ValueChange> classes;     ///< by level: "2", "3", "4" or "2b"
    std::vector<std::string> fields;      ///< the names of other things that differ
    std::vector<ValueChange> values;      ///< theirs, where people can read them
};

CompDifference DifferenceOf(const ZVSmartZvg::SZVLGZvgComp& a, const ZVSmartZvg::SZVLGZvgComp& b);

}  // namespace ZVSmartModel
