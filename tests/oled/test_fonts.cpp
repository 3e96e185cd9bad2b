// The generated greyscale fonts keep the layout the big driver indexes
// them by: where the ink sits, and that it is anti-aliased.
#include <gtest/gtest.h>

#include <algorithm>

#include "font_tables.h"

namespace {

struct Ink {
    int top = 99, bottom = -1, left = 99, right = -1;
    bool full = false, partial = false;
};

// Ink of a row-major 4-bit glyph of the given size.
Ink ink_of(const unsigned char* glyph, int width, int height)
{
    Ink ink;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const unsigned char pair = glyph[(y * width + x) / 2];
            const int level = x % 2 == 0 ? pair >> 4 : pair & 0x0F;
            if (level != 0) {
                ink.top = std::min(ink.top, y);
                ink.bottom = std::max(ink.bottom, y);
                ink.left = std::min(ink.left, x);
                ink.right = std::max(ink.right, x);
                ink.full = ink.full || level == 15;
                ink.partial = ink.partial || level < 15;
            }
        }
    }
    return ink;
}

TEST(Fonts, BigDigitsAreAntiAliasedFiguresOnRowsFourToTwentyFour)
{
    for (int d = 0; d < 10; ++d) {
        const Ink ink = ink_of(&kBigDigit16x27[d * 216], 16, 27);
        EXPECT_EQ(4, ink.top) << d;
        EXPECT_EQ(24, ink.bottom) << d;
        EXPECT_NEAR(13, ink.right - ink.left + 1, 2) << d;
        EXPECT_TRUE(ink.full && ink.partial) << d;
    }
    const Ink dot = ink_of(&kBigDigit16x27[10 * 216], 16, 27);
    EXPECT_EQ(21, dot.top);
    EXPECT_EQ(24, dot.bottom);
    EXPECT_EQ(3, dot.right - dot.left);
    EXPECT_LE(dot.left, 2);
    EXPECT_EQ(-1, ink_of(&kBigDigit16x27[11 * 216], 16, 27).bottom);
}

TEST(Fonts, SmallGreyTextSitsOnRowNineWithDescendersBelow)
{
    for (char c : {'A', 'H', 'x', '0'}) {
        const Ink ink = ink_of(&kAscii8x13Grey[(c - 32) * 52], 8, 13);
        EXPECT_EQ(9, ink.bottom) << c;
        EXPECT_TRUE(ink.full && ink.partial) << c;
    }
    for (char c : {'g', 'p', 'y'}) {
        EXPECT_NEAR(12, ink_of(&kAscii8x13Grey[(c - 32) * 52], 8, 13).bottom, 1) << c;
    }
    EXPECT_EQ(-1, ink_of(&kAscii8x13Grey[0], 8, 13).bottom);
    for (int c = 33; c <= 126; ++c) {
        EXPECT_EQ(0, kAscii6x8[(c - 32) * 6]) << c;  // the spacing column
    }
}

}  // namespace
