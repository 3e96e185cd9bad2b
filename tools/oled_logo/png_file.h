#ifndef OLED_LOGO_PNG_FILE_H
#define OLED_LOGO_PNG_FILE_H

#include <cstdint>
#include <string>
#include <vector>

// Picture brightness, 0 (black) to 255 (white), row by row; transparent
// parts already laid over black, the panel's background.
struct GreyImage {
    int width = 0;
    int height = 0;
    std::vector<float> pixels;
};

// Any PNG: grey or colour, with or without alpha, palette, 1 to 16 bits.
// Empty result: image filled; otherwise a one-line reason.
std::string read_png(const std::string& path, GreyImage& image);

// An 8-bit grey PNG of width x height pixels.
std::string write_grey_png(const std::string& path, int width, int height, const std::vector<std::uint8_t>& pixels);

#endif
