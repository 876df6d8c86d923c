#pragma once

#include <string>

#include "ZVIM/Transf.h"
#include "ZVSmartZvg/Comp.h"
#include "ZVSmartZvg/DisplayAttr.h"
#include "tools/zvg/text/Document.h"

namespace ZVSmartModel::Tool {

// The library's records as documents. Members bear the names of the records' fields.

/// A value whose meaning is the host's: its bits, and what they are "asReal", as an f64.
Document EightBytesDocument(ZVSmartZvg::u64 value);

/// The rows of the transform, 3 arrays of 4 numbers.
Document TransfDocument(const ZVIM::GeometryPrimitiveResource::CZVIMTransf& transf);

/// The properties of (name, value) pairs, in their order, each with its kind, unless that is text,
/// and its unit.
Document PropertiesDocument(const ZVSmartZvg::PropertyList& properties);

/// The two flag words and the fields that they announce.
Document DisplayAttrDocument(const ZVSmartZvg::SZVLGZvgDisplayAttr& attr);

/// Every field of a component but what its geometry references lead to.
Document CompDocument(const ZVSmartZvg::SZVLGZvgComp& comp);

}  // namespace ZVSmartModel::Tool
