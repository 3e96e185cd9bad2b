#include "pgm_render.h"

#include <ctype.h>

namespace {

const char* const kUpper = "\xE2\x96\x80";  // upper half block
const char* const kLower = "\xE2\x96\x84";  // lower half block
const char* const kFull = "\xE2\x96\x88";   // full block

// Next header number, skipping white space and comments.
bool header_number(const std::string& bytes, size_t* pos, int* value)
{
    while (*pos < bytes.size()) {
        if (bytes[*pos] == '#') {
            while (*pos < bytes.size() && bytes[*pos] != '\n') {
                ++*pos;
            }
        } else if (isspace(static_cast<unsigned char>(bytes[*pos]))) {
            ++*pos;
        } else {
            break;
        }
    }
    long number = 0;
    const size_t start = *pos;
    while (*pos < bytes.size() && isdigit(static_cast<unsigned char>(bytes[*pos])) && number < 100000) {
        number = number * 10 + (bytes[*pos] - '0');
        ++*pos;
    }
    *value = static_cast<int>(number);
    return *pos > start && number < 100000;
}

// 256-colour palette index of a level: black, then the 24-step grey ramp.
int palette_grey(int level, int maxval)
{
    if (level <= 0) {
        return 16;
    }
    return 232 + (level * 23 + maxval - 1) / maxval;
}

}  // namespace

bool parse_pgm(const std::string& bytes, GreyImage* image, std::string* error)
{
    if (bytes.compare(0, 2, "P5") != 0) {
        *error = "not a binary PGM (no P5 header)";
        return false;
    }
    size_t pos = 2;
    if (!header_number(bytes, &pos, &image->width) || !header_number(bytes, &pos, &image->height) ||
        !header_number(bytes, &pos, &image->maxval)) {
        *error = "PGM header incomplete";
        return false;
    }
    if (image->width == 0 || image->height == 0 || image->maxval == 0 || image->maxval > 255) {
        *error = "PGM size or maxval out of range";
        return false;
    }
    ++pos;  // the single white-space character before the pixels
    const size_t count = static_cast<size_t>(image->width) * static_cast<size_t>(image->height);
    if (pos > bytes.size() || bytes.size() - pos < count) {
        *error = "PGM pixel data cut short";
        return false;
    }
    image->pixels.assign(bytes.begin() + static_cast<long>(pos), bytes.begin() + static_cast<long>(pos + count));
    return true;
}

std::string render_half_blocks(const GreyImage& image, bool plain)
{
    std::string out;
    for (int y = 0; y < image.height; y += 2) {
        int last_top = -1;
        int last_bottom = -1;
        for (int x = 0; x < image.width; ++x) {
            const int top = image.pixels[static_cast<size_t>(y * image.width + x)];
            const int bottom = y + 1 < image.height ? image.pixels[static_cast<size_t>((y + 1) * image.width + x)] : 0;
            if (plain) {
                out += top > 0 ? (bottom > 0 ? kFull : kUpper) : (bottom > 0 ? kLower : " ");
                continue;
            }
            const int fg = palette_grey(top, image.maxval);
            const int bg = palette_grey(bottom, image.maxval);
            if (fg != last_top || bg != last_bottom) {
                out += "\x1b[38;5;" + std::to_string(fg) + ";48;5;" + std::to_string(bg) + "m";
                last_top = fg;
                last_bottom = bg;
            }
            out += kUpper;
        }
        out += plain ? "\n" : "\x1b[0m\n";
    }
    return out;
}
