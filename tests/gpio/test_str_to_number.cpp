#include <gtest/gtest.h>

#include <string>

#include "register_access.h"

TEST(StrToNumber, AcceptsUpTo32BitsAndOnFailureKeepsWhatWasRead)
{
    const unsigned int untouched = 0xDEADBEEF;
    const struct {
        const char* text;
        int result;
        unsigned int stored;
    } cases[] = {
        {"", 0, 0},
        {"4294967295", 0, 0xFFFFFFFF},
        {"0XfF", 0, 0xFF},
        {"0x000000001", 0, 1},
        {"0x", 1, untouched},
        {"12a", 1, 12},
        {"0x12G", 1, 0x12},
        {"4294967296", 1, 429496729},
        {"0x100000000", 1, 0x10000000},
        {"-5", 1, 0},
        {" 5", 1, 0},
    };
    for (const auto& c : cases) {
        std::string text = c.text;
        unsigned int stored = untouched;
        EXPECT_EQ(StrToNumber(&text[0], &stored), c.result) << c.text;
        EXPECT_EQ(stored, c.stored) << c.text;
    }
}
