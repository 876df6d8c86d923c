#pragma once

#include <vector>

#include "ZVSmartModel/Body.h"
#include "ZVSmartZvg/Geo.h"
#include "model/element/Budget.h"

namespace ZVSmartModel {

/// The surfaces of a record and of all that is nested in it, one per look: shells, visual shells,
/// poly face meshes, meshes and the triangles of render meshes, in the record's coordinates. What
/// is nested takes the colour of the innermost display attributes around it; what is mirrored there
/// turns round, so that outside stays outside. What cannot be drawn
/// is left out (see DropUndrawable), so untrusted records are safe; what cutting polygons takes is
/// charged.
std::vector<Triangles> SurfacesOf(const ZVSmartZvg::SZVLGZvgGeo& geo, Budget& limits);

}  // namespace ZVSmartModel
