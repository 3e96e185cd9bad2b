// The generated greyscale and monochrome fonts keep the layout the
// drivers index them by.
#include <gtest/gtest.h>

#include <algorithm>

#include "font_tables.h"

namespace {

int big_level(int glyph, int x, int y)
{
    const unsigned char pair = kBigDigit16x27[glyph * 216 + y * 8 + x / 2];
    return x % 2 == 0 ? pair >> 4 : pair & 0x0F;
}

int small_level(char c, int x, int y)
{
    const unsigned char pair = kAscii8x13Grey[(c - 32) * 52 + y * 4 + x / 2];
    return x % 2 == 0 ? pair >> 4 : pair & 0x0F;
}

// Ink rows and columns of a glyph: [first, last], or first > last if none.
struct Ink {
    int top = 99, bottom = -1, left = 99, right = -1;
    bool full = false, partial = false;

    void add(int x, int y, int level)
    {
        if (level == 0) {
            return;
        }
        top = std::min(top, y);
        bottom = std::max(bottom, y);
        left = std::min(left, x);
        right = std::max(right, x);
        full = full || level == 15;
        partial = partial || level < 15;
    }
};

TEST(Fonts, BigDigitsAreAntiAliasedFiguresOnRowsFourToTwentyFour)
{
    for (int d = 0; d < 10; ++d) {
        SCOPED_TRACE(d);
        Ink ink;
        for (int y = 0; y < 27; ++y) {
            for (int x = 0; x < 16; ++x) {
                ink.add(x, y, big_level(d, x, y));
            }
        }
        EXPECT_EQ(4, ink.top);
        EXPECT_EQ(24, ink.bottom);
        EXPECT_GE(ink.right - ink.left + 1, 11);
        EXPECT_LE(ink.right - ink.left + 1, 15);
        EXPECT_TRUE(ink.full);
        EXPECT_TRUE(ink.partial);
    }
    Ink dot;
    for (int y = 0; y < 27; ++y) {
        for (int x = 0; x < 16; ++x) {
            dot.add(x, y, big_level(10, x, y));
            EXPECT_EQ(0, big_level(11, x, y));
        }
    }
    EXPECT_EQ(21, dot.top);
    EXPECT_EQ(24, dot.bottom);
    EXPECT_EQ(3, dot.right - dot.left);
    EXPECT_LE(dot.left, 2);
}

TEST(Fonts, SmallGreyTextSitsOnRowNineWithDescendersBelow)
{
    for (char c : {'A', 'H', 'x', '0'}) {
        Ink ink;
        for (int y = 0; y < 13; ++y) {
            for (int x = 0; x < 8; ++x) {
                ink.add(x, y, small_level(c, x, y));
            }
        }
        EXPECT_EQ(9, ink.bottom) << c;
        EXPECT_TRUE(ink.full && ink.partial) << c;
    }
    for (char c : {'g', 'p', 'y'}) {
        Ink ink;
        for (int y = 0; y < 13; ++y) {
            for (int x = 0; x < 8; ++x) {
                ink.add(x, y, small_level(c, x, y));
            }
        }
        EXPECT_GE(ink.bottom, 11) << c;
        EXPECT_LE(ink.bottom, 12) << c;
    }
    for (int i = 0; i < 52; ++i) {
        EXPECT_EQ(0, kAscii8x13Grey[i]);
    }
}

TEST(Fonts, CarriedMonochromeFontsCoverPrintableCharacters)
{
    for (int c = 33; c <= 126; ++c) {
        unsigned ink6 = 0;
        unsigned ink16 = 0;
        EXPECT_EQ(0, kAscii6x8[(c - 32) * 6]) << c;
        for (int i = 0; i < 6; ++i) {
            ink6 |= kAscii6x8[(c - 32) * 6 + i];
        }
        for (int i = 0; i < 16; ++i) {
            ink16 |= kAscii8x16[(c - 32) * 16 + i];
        }
        EXPECT_NE(0u, ink6) << c;
        EXPECT_NE(0u, ink16) << c;
        EXPECT_EQ(0u, ink6 & ~0xFFu) << c;
        EXPECT_EQ(0u, ink16 & ~0xFFu) << c;
    }
}

}  // namespace
