#pragma once

#include <vector>

#include "ZVSmartZvg/Geo.h"
#include "model/element/Budget.h"
#include "model/scene/SceneBuilder.h"

namespace ZVSmartModel {

/// The surfaces of a record and of all that is nested in it, one per look: shells, visual shells,
/// poly face meshes, meshes and the triangles of render meshes, in the record's coordinates. What
/// is nested takes the colour of the innermost display attributes around it. Faces whose indices
/// lead nowhere are left out, so untrusted records are safe; what cutting polygons takes is
/// charged.
std::vector<ShapeSurface> SurfacesOf(const ZVSmartZvg::SZVLGZvgGeo& geo, Budget& limits);

/// What display attributes make of a surface; they hold a colour. `otherName` is its name where
/// they have none.
SceneLook LookOf(const ZVSmartZvg::SZVLGZvgDisplayAttr& attr, const std::wstring& otherName);

}  // namespace ZVSmartModel
