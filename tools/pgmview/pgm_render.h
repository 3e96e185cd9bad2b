#ifndef OLED_TOOLS_PGMVIEW_PGM_RENDER_H
#define OLED_TOOLS_PGMVIEW_PGM_RENDER_H

#include <stdint.h>

#include <string>
#include <vector>

struct GreyImage {
    int width = 0;
    int height = 0;
    int maxval = 0;
    std::vector<uint8_t> pixels;  // row-major
};

// Parses a binary PGM (P5, maxval 1..255). On failure returns false and
// sets error to a one-line reason.
bool parse_pgm(const std::string& bytes, GreyImage* image, std::string* error);

// The image as terminal text, two pixel rows per line with half-block
// characters: in colour (greys, the upper pixel the foreground) or, plain,
// with a pixel lit when its level is above zero.
std::string render_half_blocks(const GreyImage& image, bool plain);

// One line with the level of each LED in the simulator's leds.json.
std::string render_led_line(const std::string& json);

#endif
