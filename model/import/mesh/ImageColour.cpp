#include "model/import/mesh/ImageColour.h"

#include <cmath>
#include <cstddef>
#include <vector>

#ifdef ZVG_HAVE_PNG
#include <png.h>
#endif
#ifdef ZVG_HAVE_JPEG
#include <jpeglib.h>
#include <csetjmp>
#include <cstdio>  // jpeglib.h needs it before
#endif

namespace ZVSmartModel {

namespace {

/// Sums pixels up.
class PixelSum {
  public:
    PixelSum() {
        for (std::size_t i = 0; i < light.size(); ++i) {
            light[i] = LightOf(static_cast<double>(i) / 255);
        }
    }

    /// `parts` is 3, or 4 with alpha.
    void Add(const std::uint8_t* pixels, std::size_t count, std::size_t parts) {
        for (std::size_t i = 0; i < count; ++i, pixels += parts) {
            const double cover = parts == 4 ? pixels[3] / 255.0 : 1;
            for (std::size_t part = 0; part < 3; ++part) sum[part] += cover * light[pixels[part]];
            covered += cover;
        }
        all += static_cast<double>(count);
    }

    std::optional<MeanColour> Mean() const {
        if (all == 0) return std::nullopt;
        MeanColour mean;
        for (std::size_t i = 0; i < 3; ++i) mean.light[i] = covered > 0 ? sum[i] / covered : 0;
        mean.alpha = covered / all;
        return mean;
    }

  private:
    std::array<double, 256> light;
    std::array<double, 3> sum = {};
    double covered = 0, all = 0;
};

#ifdef ZVG_HAVE_PNG
std::optional<MeanColour> MeanOfPng(const std::string& bytes) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()) == 0) {
        return std::nullopt;
    }
    image.format = PNG_FORMAT_RGBA;
    const std::uint64_t pixels = std::uint64_t{image.width} * image.height;
    std::vector<std::uint8_t> decoded(pixels <= mostPixels ? pixels * 4 : 0);
    const bool done = pixels <= mostPixels &&
                      png_image_finish_read(&image, nullptr, decoded.data(), 0, nullptr) != 0;
    png_image_free(&image);
    PixelSum sum;
    if (done) sum.Add(decoded.data(), pixels, 4);
    return sum.Mean();
}
#endif

#ifdef ZVG_HAVE_JPEG
struct JpegErrors {
    jpeg_error_mgr manager;  // first, for the library knows this part alone
    std::jmp_buf failed;
};

[[noreturn]] void FailJpeg(j_common_ptr info) {
    // NOLINTNEXTLINE(cert-err52-cpp): an exception does not pass through the library
    std::longjmp(reinterpret_cast<JpegErrors*>(info->err)->failed, 1);
}

/// Adds the image an eighth as large, whose pixels are means already; `row` holds one row of it.
/// The library leaves through a jump, which no object with a destructor may stand in the way of.
bool AddJpeg(jpeg_decompress_struct& image, JpegErrors& errors, const std::string& bytes,
             std::vector<std::uint8_t>& row, PixelSum& sum) {
    if (setjmp(errors.failed) != 0) return false;  // NOLINT(cert-err52-cpp)
    jpeg_create_decompress(&image);
    jpeg_mem_src(&image, reinterpret_cast<const unsigned char*>(bytes.data()),
                 static_cast<unsigned long>(bytes.size()));
    jpeg_read_header(&image, TRUE);
    if (std::uint64_t{image.image_width} * image.image_height > mostPixels) return false;
    image.scale_num = 1;
    image.scale_denom = 8;
    image.out_color_space = JCS_RGB;
    jpeg_start_decompress(&image);
    row.resize(std::size_t{image.output_width} * 3);
    while (image.output_scanline < image.output_height) {
        JSAMPROW start = row.data();
        jpeg_read_scanlines(&image, &start, 1);
        sum.Add(row.data(), image.output_width, 3);
    }
    return errors.manager.num_warnings == 0;  // which it gives where bytes are missing
}

std::optional<MeanColour> MeanOfJpeg(const std::string& bytes) {
    JpegErrors errors;
    jpeg_decompress_struct image = {};
    image.err = jpeg_std_error(&errors.manager);
    errors.manager.error_exit = FailJpeg;
    errors.manager.output_message = [](j_common_ptr) {};
    std::vector<std::uint8_t> row;
    PixelSum sum;
    const bool done = AddJpeg(image, errors, bytes, row, sum);
    jpeg_destroy_decompress(&image);
    return done ? sum.Mean() : std::nullopt;
}
#endif

}  // namespace

double LightOf(double stored) {
    return stored <= 0.04045 ? stored / 12.92 : std::pow((stored + 0.055) / 1.055, 2.4);
}

double StoredOf(double light) {
    return light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

std::optional<MeanColour> MeanOfImage(const std::string& bytes) {
#ifdef ZVG_HAVE_PNG
    if (bytes.starts_with("\x89PNG")) return MeanOfPng(bytes);
#endif
#ifdef ZVG_HAVE_JPEG
    if (bytes.starts_with("\xFF\xD8\xFF")) return MeanOfJpeg(bytes);
#endif
    static_cast<void>(bytes);
    return std::nullopt;
}

}  // namespace ZVSmartModel
