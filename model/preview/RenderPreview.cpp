#include "model/preview/RenderPreview.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "model/preview/Renderer.h"

namespace ZVSmartModel {

std::optional<ZVSmartZvg::SZVLGZvgGeoImage> RenderPreview(const Scene& scene, unsigned int width,
                                                          unsigned int height,
                                                          unsigned int threads) {
    const Picture picture = Render(scene, width, height, false, {}, threads);
    if (picture.pixels.empty()) return std::nullopt;
    ZVSmartZvg::SZVLGZvgGeoImage image;
    image.width = picture.width;
    image.height = picture.height;
    image.pixels = static_cast<std::uint8_t*>(std::malloc(picture.pixels.size()));
    if (image.pixels == nullptr) throw std::bad_alloc();
    std::memcpy(image.pixels, picture.pixels.data(), picture.pixels.size());
    return image;
}

}  // namespace ZVSmartModel
