#pragma once

#include "ZVSmartZvg/Comp.h"
#include "tools/zvg/text/Document.h"

/// The digest of all that a component says but its key, its floor and its geometry. The ids of
/// classes are left out: they number a file's tables and change with whatever else is in it.
ZVSmartZvg::u64 AspectsDigest(const ZVSmartZvg::SZVLGZvgComp& comp);

/// What AspectsDigest tells apart, member by member; members that do not differ are left out:
/// - "properties", a list of {"name", "a", "b"}; a property that one side does not have is null
///   there. Properties of one name are compared in their order,
/// - "classes", a list of {"level", "a", "b"}, level 2, 3, 4 or "2b",
/// - "fields", the names of other things that differ.
Document CompDifference(const ZVSmartZvg::SZVLGZvgComp& a, const ZVSmartZvg::SZVLGZvgComp& b);
