#pragma once

#include <optional>
#include <string>

#include "ZVSmartZvg/Geo.h"
#include "model/scene/Scene.h"

namespace ZVSmartModel {

/// The size of the preview that a packed file gets.
constexpr unsigned int previewWidth = 640;
constexpr unsigned int previewHeight = 480;

/// A drawn scene as a file stores it; none where there is nothing to show. Throws what Render
/// throws.
std::optional<ZVSmartZvg::SZVLGZvgGeoImage> RenderPreview(const Scene& scene, unsigned int width,
                                                          unsigned int height,
                                                          unsigned int threads);

}  // namespace ZVSmartModel
