#pragma once

#include <string>

#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Values.h"

namespace ZVSmartModel {

/// Whether this build draws pictures, and the ray tracer that it needs for them can be loaded.
/// Throws Error Internal where memory runs out over that.
ZVSM_API bool CanRenderPictures();

/// How to draw a picture.
struct RenderOptions {
    /// Pixels, 1 to 8192.
    /// @{
    unsigned int width = 640, height = 480;
    /// @}
    bool rooms = false;  ///< the bodies of rooms as well, which hide the others
    /// Draw as long as it takes. Else drawing ends with Error, Damaged, after ten times the time
    /// that buildings of this size take: bodies that lie in each other by the thousand take years.
    bool unlimited = false;
};

/// Draws all elements in a three-quarter view on a transparent ground. The same file and size give
/// the same pixels. Uses all processors.
///
/// Throws Error: Usage for sizes beyond the above and where this build draws no pictures, Damaged
/// for geometry that cannot be read, NotFound where there is nothing to see, Internal, Cancelled.
ZVSM_API Picture RenderPicture(const BlockFile& file, const RenderOptions& options = {},
                               const Progress& progress = {});

/// The picture as the bytes of a PNG file. Throws Error: Usage for a picture without pixels, or
/// with another number of them than its sides say, and where this build writes no PNG.
ZVSM_API std::string PngOf(const Picture& picture);

}  // namespace ZVSmartModel
