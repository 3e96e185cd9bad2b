#include "png_file.h"

#include <png.h>

#include <memory>

namespace {

// Beyond this the picture is not artwork for a 256 x 64 panel, and the
// decoded copy would need more memory than an operator's PC should lend.
constexpr unsigned long kMaxPixels = 64ul * 1024 * 1024;

struct ImageRelease {
    void operator()(png_image* image) const { png_image_free(image); }
};

}  // namespace

std::string read_png(const std::string& path, GreyImage& image)
{
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    // Frees libpng's read state on every way out, including failures.
    std::unique_ptr<png_image, ImageRelease> release(&png);
    if (png_image_begin_read_from_file(&png, path.c_str()) == 0)
        return png.message;
    if (png.width == 0 || png.height == 0 || static_cast<unsigned long>(png.width) * png.height > kMaxPixels) {
        return "picture of " + std::to_string(png.width) + " x " + std::to_string(png.height) + " pixels is too large";
    }
    png.format = PNG_FORMAT_GA;
    std::vector<png_byte> buffer(PNG_IMAGE_SIZE(png));
    if (png_image_finish_read(&png, nullptr, buffer.data(), 0, nullptr) == 0)
        return png.message;
    image.width = static_cast<int>(png.width);
    image.height = static_cast<int>(png.height);
    image.pixels.resize(static_cast<std::size_t>(image.width) * image.height);
    for (std::size_t i = 0; i < image.pixels.size(); ++i) {
        image.pixels[i] = buffer[2 * i] * (buffer[2 * i + 1] / 255.0f);
    }
    return "";
}

std::string write_grey_png(const std::string& path, int width, int height, const std::vector<std::uint8_t>& pixels)
{
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    png.width = static_cast<png_uint_32>(width);
    png.height = static_cast<png_uint_32>(height);
    png.format = PNG_FORMAT_GRAY;
    if (png_image_write_to_file(&png, path.c_str(), 0, pixels.data(), 0, nullptr) == 0) {
        const std::string reason = png.message;
        png_image_free(&png);
        return reason;
    }
    return "";
}
