#include <png.h>

#include "panel_controller.h"
#include "panel_image.h"

namespace {

const uint8_t kDark = 16;  // an unlit OLED pixel is not quite black

void append_to_string(png_structp png, png_bytep data, png_size_t length)
{
    std::string* out = static_cast<std::string*>(png_get_io_ptr(png));
    out->append(reinterpret_cast<const char*>(data), length);
}

void no_flush(png_structp) {}

uint8_t mix(uint8_t lit, int level, int maxval)
{
    return static_cast<uint8_t>(kDark + (lit - kDark) * level / maxval);
}

// libpng reports errors by longjmp: this function keeps nothing that a
// jump could leave half-done besides the two libpng structures.
bool encode_rgb(const std::vector<png_byte>& rgb, png_uint_32 width, png_uint_32 height, std::string* out)
{
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    if (png == nullptr) {
        return false;
    }
    png_infop info = png_create_info_struct(png);
    if (info == nullptr || setjmp(png_jmpbuf(png)) != 0) {
        png_destroy_write_struct(&png, &info);
        return false;
    }
    png_set_write_fn(png, out, append_to_string, no_flush);
    png_set_IHDR(png, info, width, height, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    for (png_uint_32 y = 0; y < height; ++y) {
        png_write_row(png, &rgb[static_cast<size_t>(y) * width * 3]);
    }
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return true;
}

}  // namespace

std::string panel_png(const PanelController& panel, PanelColour colour, int scale)
{
    const std::vector<uint8_t> pixels = panel.pixels();
    const int width = panel.width();
    const int rows = panel.visible_rows() < panel.height() ? panel.visible_rows() : panel.height();
    const int maxval = panel.maxval();
    const int out_width = width * scale;
    std::vector<png_byte> rgb(static_cast<size_t>(out_width * rows * scale * 3));
    for (int y = 0; y < rows * scale; ++y) {
        for (int x = 0; x < out_width; ++x) {
            const int level = pixels[static_cast<size_t>((y / scale) * width + x / scale)];
            png_byte* pixel = &rgb[static_cast<size_t>((y * out_width + x) * 3)];
            pixel[0] = mix(colour.red, level, maxval);
            pixel[1] = mix(colour.green, level, maxval);
            pixel[2] = mix(colour.blue, level, maxval);
        }
    }
    std::string out;
    if (!encode_rgb(rgb, static_cast<png_uint_32>(out_width), static_cast<png_uint_32>(rows * scale), &out)) {
        return std::string();
    }
    return out;
}
