#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "pgm_render.h"

namespace {

TEST(PgmView, PlainHalfBlocksPairRowsOfTheImage)
{
    // 3x3, maxval 15, with a comment: rows (0 5 0), (15 0 0), (0 0 1).
    const std::string pgm =
        std::string("P5\n# panel\n3 3\n15\n") + std::string("\x00\x05\x00\x0F\x00\x00\x00\x00\x01", 9);
    GreyImage image;
    std::string error;
    ASSERT_TRUE(parse_pgm(pgm, &image, &error)) << error;
    EXPECT_EQ("\xE2\x96\x84\xE2\x96\x80 \n  \xE2\x96\x80\n", render_half_blocks(image, true));

    const std::string up = "\xE2\x96\x80";
    EXPECT_EQ("\x1b[38;5;16;48;5;255m" + up + "\x1b[38;5;240;48;5;16m" + up + "\x1b[38;5;16;48;5;16m" + up +
                  "\x1b[0m\n" + "\x1b[38;5;16;48;5;16m" + up + up + "\x1b[38;5;234;48;5;16m" + up + "\x1b[0m\n",
              render_half_blocks(image, false));
}

TEST(PgmView, BrokenFilesAreRefusedWithAReason)
{
    GreyImage image;
    std::string error;
    for (const auto& c :
         std::vector<std::pair<std::string, std::string>>{{"P6\n1 1\n255\nxyz", "not a binary PGM (no P5 header)"},
                                                          {"P5\n4 4\n1\n\x01\x01", "PGM pixel data cut short"},
                                                          {"P5\n4 4\n", "PGM header incomplete"},
                                                          {"P5\n4 4\n300\n", "PGM size or maxval out of range"}}) {
        EXPECT_FALSE(parse_pgm(c.first, &image, &error)) << c.first;
        EXPECT_EQ(c.second, error);
    }
}

}  // namespace
