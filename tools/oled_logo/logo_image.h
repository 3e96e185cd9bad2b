#ifndef OLED_LOGO_LOGO_IMAGE_H
#define OLED_LOGO_LOGO_IMAGE_H

#include <cstdint>
#include <vector>

#include "png_file.h"

// The big panel's boot logo: 256 x 64 pixels, 16 grey levels, packed two
// pixels a byte with the left pixel in the high nibble, 128 bytes a row.
namespace logo {

constexpr int kWidth = 256;
constexpr int kHeight = 64;
constexpr std::size_t kFileSize = kWidth * kHeight / 2;
constexpr int kLevels = 16;

// The picture scaled to fit the panel with its aspect ratio kept, centred
// on black: kWidth x kHeight brightness values 0..255.
std::vector<float> fit_on_panel(const GreyImage& picture);

// Brightness to levels 0..15, nearest level or Floyd-Steinberg dithered.
std::vector<std::uint8_t> quantise(const std::vector<float>& panel, bool dither);

std::vector<std::uint8_t> pack(const std::vector<std::uint8_t>& levels);
std::vector<std::uint8_t> unpack(const std::vector<std::uint8_t>& file);

// Levels as 8-bit grey, 0..15 spread evenly over 0..255.
std::vector<std::uint8_t> to_grey(const std::vector<std::uint8_t>& levels);

}  // namespace logo

#endif
