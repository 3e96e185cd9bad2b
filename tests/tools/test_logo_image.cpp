#include <gtest/gtest.h>

#include <png.h>

#include <cmath>

#include "logo_image.h"
#include "temp_root.h"

namespace {

GreyImage flat(int width, int height, float brightness)
{
    GreyImage image;
    image.width = width;
    image.height = height;
    image.pixels.assign(static_cast<std::size_t>(width) * height, brightness);
    return image;
}

float at(const std::vector<float>& panel, int x, int y)
{
    return panel[static_cast<std::size_t>(y) * logo::kWidth + x];
}

// Bounding box of the non-black panel pixels: left, top, right, bottom (exclusive).
std::vector<int> lit_area(const std::vector<float>& panel)
{
    std::vector<int> box = {logo::kWidth, logo::kHeight, 0, 0};
    for (int y = 0; y < logo::kHeight; ++y) {
        for (int x = 0; x < logo::kWidth; ++x) {
            if (at(panel, x, y) < 0.5f)
                continue;
            box = {std::min(box[0], x), std::min(box[1], y), std::max(box[2], x + 1), std::max(box[3], y + 1)};
        }
    }
    return box;
}

TEST(LogoImage, PictureFitsWithItsAspectCentredOnBlack)
{
    EXPECT_EQ(lit_area(logo::fit_on_panel(flat(128, 64, 255))), (std::vector<int>{64, 0, 192, 64}));
    EXPECT_EQ(lit_area(logo::fit_on_panel(flat(1024, 64, 255))), (std::vector<int>{0, 24, 256, 40}));
    EXPECT_EQ(lit_area(logo::fit_on_panel(flat(3000, 1, 255))), (std::vector<int>{0, 31, 256, 32}));
    // Flat areas keep their brightness whatever the scale; halving averages
    // pairs of stripes; a picture of the panel's size stays as it is.
    EXPECT_NEAR(at(logo::fit_on_panel(flat(333, 77, 100)), 128, 32), 100.0f, 0.01f);
    GreyImage stripes = flat(512, 128, 0);
    for (std::size_t i = 0; i < stripes.pixels.size(); i += 2)
        stripes.pixels[i] = 255;
    EXPECT_NEAR(at(logo::fit_on_panel(stripes), 77, 10), 127.5f, 0.01f);
    GreyImage exact = flat(256, 64, 0);
    for (std::size_t i = 0; i < exact.pixels.size(); ++i)
        exact.pixels[i] = static_cast<float>((i * 37) % 256);
    EXPECT_EQ(logo::fit_on_panel(exact), exact.pixels);
}

TEST(LogoImage, LevelsRoundToSixteenAndDitheringKeepsTheMean)
{
    std::vector<float> ramp(logo::kWidth * logo::kHeight);
    for (std::size_t i = 0; i < ramp.size(); ++i)
        ramp[i] = static_cast<float>(i % logo::kWidth);
    const std::vector<std::uint8_t> nearest = logo::quantise(ramp, false);
    // 8 is below half a step (8.5).
    EXPECT_EQ((std::vector<int>{nearest[8], nearest[9], nearest[254]}), (std::vector<int>{0, 1, 15}));
    EXPECT_EQ(logo::quantise(std::vector<float>(ramp.size(), 300.0f), false)[5], 15);
    EXPECT_EQ(logo::quantise(std::vector<float>(ramp.size(), -9.0f), true)[5], 0);

    // 25 lies between levels 1 (17) and 2 (34): dithering mixes the two so
    // the area looks like 25.
    const std::vector<std::uint8_t> dithered = logo::quantise(std::vector<float>(ramp.size(), 25.0f), true);
    double sum = 0;
    for (const std::uint8_t level : dithered) {
        sum += level * 17;
        EXPECT_TRUE(level == 1 || level == 2);
    }
    EXPECT_NEAR(sum / dithered.size(), 25.0, 0.1);
}

TEST(LogoImage, FilePacksTwoPixelsAByteLeftPixelHigh)
{
    std::vector<std::uint8_t> levels(logo::kWidth * logo::kHeight, 0);
    levels[0] = 0xA;
    levels[1] = 0x3;
    levels[255] = 0xF;               // last pixel of row 0
    levels[logo::kWidth + 2] = 0x7;  // row 1, third pixel
    const std::vector<std::uint8_t> file = logo::pack(levels);
    ASSERT_EQ(file.size(), 8192u);
    EXPECT_EQ(file[0], 0xA3);
    EXPECT_EQ(file[127], 0x0F);
    EXPECT_EQ(file[128 + 1], 0x70);
    EXPECT_EQ(logo::unpack(file), levels);
    EXPECT_EQ(logo::to_grey({0, 1, 15}), (std::vector<std::uint8_t>{0, 17, 255}));
}

// Depths, palettes and grey are libpng's to convert; transparency is ours.
TEST(LogoImage, ReadsTransparencyOnBlack)
{
    TempRoot dir;
    // White transparent, white opaque, white half transparent.
    const std::uint8_t rgba[12] = {255, 255, 255, 0, 255, 255, 255, 255, 255, 255, 255, 128};
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    png.width = 3;
    png.height = 1;
    png.format = PNG_FORMAT_RGBA;
    ASSERT_NE(png_image_write_to_file(&png, dir.host("/rgba.png").c_str(), 0, rgba, 0, nullptr), 0) << png.message;
    GreyImage image;
    ASSERT_EQ(read_png(dir.host("/rgba.png"), image), "");
    ASSERT_EQ(image.width * image.height, 3);
    EXPECT_NEAR(image.pixels[0], 0, 1);
    EXPECT_NEAR(image.pixels[1], 255, 1);
    EXPECT_NEAR(image.pixels[2], 128, 1);
}

}  // namespace
