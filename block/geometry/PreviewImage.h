#pragma once

#include "ZVSmartZvg/Geo.h"
#include "geometry/GeoBlockStore.h"

// The preview image is the one image of a geometry record under an identification of its own.

namespace ZVSmartZvg {

constexpr const wchar_t* previewIdentification = L"mater_zvg_preview_image_indent";

/// Stores a copy of `image` under the preview's name. False where it has no pixels or a preview
/// is there already.
bool AddPreview(GeoBlockStore& geos, const SZVLGZvgGeoImage& image);

/// Moves the image out of the preview's record. False, with `image` unchanged, where it has none.
bool TakePreview(SZVLGZvgGeo&& record, SZVLGZvgGeoImage& image);

}  // namespace ZVSmartZvg
