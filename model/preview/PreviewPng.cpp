#include "model/preview/PreviewPng.h"

#include <cstdint>
#include <cstdlib>
#include <new>
#include <string>

#include "ZVSmartModel/Error.h"
#include "ZVSmartModel/Preview.h"

#ifdef ZVG_HAVE_PNG
#include <png.h>
#endif

namespace ZVSmartModel {

#ifdef ZVG_HAVE_PNG

namespace {

constexpr std::uint64_t mostBytes = 64 << 20;

/// libpng's simplified reader; freed with this object.
class PngFile {
  public:
    PngFile(std::FILE* file, const std::string& path) : path(path) {
        image.version = PNG_IMAGE_VERSION;
        if (!png_image_begin_read_from_stdio(&image, file)) Fail(image.message);
        image.format = PNG_FORMAT_RGBA;
    }
    ~PngFile() { png_image_free(&image); }
    PngFile(const PngFile&) = delete;
    PngFile& operator=(const PngFile&) = delete;

    ZVSmartZvg::SZVLGZvgGeoImage Decoded() {
        ZVSmartZvg::SZVLGZvgGeoImage result;
        if (std::uint64_t{image.width} * image.height * 4 > mostBytes)
            Fail("the image is too large");
        result.width = image.width;
        result.height = image.height;
        result.pixels = static_cast<std::uint8_t*>(std::malloc(result.PixelBytes()));
        if (!result.pixels) throw std::bad_alloc();
        if (!png_image_finish_read(&image, nullptr, result.pixels, 0, nullptr)) Fail(image.message);
        return result;
    }

  private:
    [[noreturn]] void Fail(const std::string& reason) {
        throw Error(Status::InputOutput, path + ": " + reason);
    }

    const std::string& path;
    png_image image = {};
};

}  // namespace

ZVSmartZvg::SZVLGZvgGeoImage ReadPng(std::FILE* file, const std::string& path) {
    return PngFile(file, path).Decoded();
}

std::string PngOf(const Picture& picture) {
    const std::uint64_t pixelBytes = std::uint64_t{picture.width} * picture.height * 4;
    if (pixelBytes == 0 || picture.pixels.size() != pixelBytes) {
        throw Error(Status::Usage, "a picture without its pixels");
    }
    png_image head = {};
    head.version = PNG_IMAGE_VERSION;
    head.width = picture.width;
    head.height = picture.height;
    head.format = PNG_FORMAT_RGBA;
    std::string bytes(PNG_IMAGE_PNG_SIZE_MAX(head), '\0');
    png_alloc_size_t size = bytes.size();
    const int done =
        png_image_write_to_memory(&head, bytes.data(), &size, 0, picture.pixels.data(), 0, nullptr);
    if (!done) throw Error(Status::Internal, std::string("PNG: ") + head.message);
    bytes.resize(size);
    return bytes;
}

#else

ZVSmartZvg::SZVLGZvgGeoImage ReadPng(std::FILE*, const std::string& path) {
    throw Error(Status::InputOutput, path + ": this build reads no PNG (it needs libpng)");
}

std::string PngOf(const Picture&) {
    throw Error(Status::Usage, "this build writes no PNG (it needs libpng)");
}

#endif

}  // namespace ZVSmartModel
