#pragma once

#include "ZVSmartZvg/Geo.h"
#include "model/element/Budget.h"
#include "tools/zvg/text/Document.h"

namespace ZVSmartModel::Tool {

/// What a geometry record holds.
///
/// "total" sums up the record and all that is nested in it. "records" is the record itself and
/// then every nested one in depth-first order, however deep: its "level" (0 for the record
/// itself), the position of its "parent" in the same list, its display attributes, and
/// - "counts", the length of each list that is not empty,
/// - "points" and "faces", of shells, meshes and curves together,
/// - "boundingBox", two corners, in the record's own coordinates: neither named transforms nor
///   display attributes move anything,
/// - "namedTransfs" and "namedTransfs2", "blobs" and "images", described one by one.
///
/// Where `limits` end, the records from there on are left out and "recordsLeftOut" says how many;
/// "total" has them all.
Document GeoDocument(const ZVSmartZvg::SZVLGZvgGeo& geo, Budget& limits);

}  // namespace ZVSmartModel::Tool
