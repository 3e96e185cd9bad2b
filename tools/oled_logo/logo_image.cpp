#include "logo_image.h"

#include <algorithm>
#include <cmath>

namespace logo {
namespace {

constexpr float kStep = 255.0f / (kLevels - 1);  // brightness between two levels

struct Tap {
    int source;
    float weight;
};

// Area averaging from `from` samples onto `to` samples: each target sample
// takes the source samples under its footprint, weighted by overlap. At
// equal sizes every target is exactly one source sample.
std::vector<std::vector<Tap>> area_taps(int from, int to)
{
    std::vector<std::vector<Tap>> taps(static_cast<std::size_t>(to));
    const double scale = static_cast<double>(from) / to;
    for (int t = 0; t < to; ++t) {
        const double begin = t * scale;
        const double end = (t + 1) * scale;
        for (int s = static_cast<int>(std::floor(begin)); s < from && s < end; ++s) {
            const double overlap = std::min<double>(end, s + 1) - std::max<double>(begin, s);
            if (overlap > 0)
                taps[t].push_back({s, static_cast<float>(overlap / scale)});
        }
    }
    return taps;
}

int level_of(float brightness)
{
    const int level = static_cast<int>(std::lround(brightness / kStep));
    return std::min(std::max(level, 0), kLevels - 1);
}

}  // namespace

std::vector<float> fit_on_panel(const GreyImage& picture)
{
    const double scale =
        std::min(static_cast<double>(kWidth) / picture.width, static_cast<double>(kHeight) / picture.height);
    const int width = std::min(kWidth, std::max(1, static_cast<int>(std::lround(picture.width * scale))));
    const int height = std::min(kHeight, std::max(1, static_cast<int>(std::lround(picture.height * scale))));
    const auto across = area_taps(picture.width, width);
    const auto down = area_taps(picture.height, height);

    // Rows first: picture.height rows of `width` samples.
    std::vector<float> narrowed(static_cast<std::size_t>(picture.height) * width, 0.0f);
    for (int y = 0; y < picture.height; ++y) {
        const float* row = &picture.pixels[static_cast<std::size_t>(y) * picture.width];
        for (int x = 0; x < width; ++x) {
            float sum = 0.0f;
            for (const Tap& tap : across[x])
                sum += row[tap.source] * tap.weight;
            narrowed[static_cast<std::size_t>(y) * width + x] = sum;
        }
    }
    std::vector<float> panel(static_cast<std::size_t>(kWidth) * kHeight, 0.0f);
    const int left = (kWidth - width) / 2;
    const int top = (kHeight - height) / 2;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            float sum = 0.0f;
            for (const Tap& tap : down[y])
                sum += narrowed[static_cast<std::size_t>(tap.source) * width + x] * tap.weight;
            panel[static_cast<std::size_t>(top + y) * kWidth + left + x] = sum;
        }
    }
    return panel;
}

std::vector<std::uint8_t> quantise(const std::vector<float>& panel, bool dither)
{
    std::vector<std::uint8_t> levels(panel.size());
    std::vector<float> wanted(panel);
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            const std::size_t i = static_cast<std::size_t>(y) * kWidth + x;
            const int level = level_of(wanted[i]);
            levels[i] = static_cast<std::uint8_t>(level);
            if (!dither)
                continue;
            // The rounding error goes to the neighbours not yet drawn.
            const float error = wanted[i] - level * kStep;
            if (x + 1 < kWidth)
                wanted[i + 1] += error * 7 / 16;
            if (y + 1 == kHeight)
                continue;
            if (x > 0)
                wanted[i + kWidth - 1] += error * 3 / 16;
            wanted[i + kWidth] += error * 5 / 16;
            if (x + 1 < kWidth)
                wanted[i + kWidth + 1] += error * 1 / 16;
        }
    }
    return levels;
}

std::vector<std::uint8_t> pack(const std::vector<std::uint8_t>& levels)
{
    std::vector<std::uint8_t> file(kFileSize);
    for (std::size_t i = 0; i < kFileSize; ++i) {
        file[i] = static_cast<std::uint8_t>((levels[2 * i] << 4) | (levels[2 * i + 1] & 0x0f));
    }
    return file;
}

std::vector<std::uint8_t> unpack(const std::vector<std::uint8_t>& file)
{
    std::vector<std::uint8_t> levels(2 * kFileSize);
    for (std::size_t i = 0; i < kFileSize; ++i) {
        levels[2 * i] = file[i] >> 4;
        levels[2 * i + 1] = file[i] & 0x0f;
    }
    return levels;
}

std::vector<std::uint8_t> to_grey(const std::vector<std::uint8_t>& levels)
{
    std::vector<std::uint8_t> grey(levels.size());
    for (std::size_t i = 0; i < levels.size(); ++i)
        grey[i] = static_cast<std::uint8_t>(levels[i] * 17);
    return grey;
}

}  // namespace logo
