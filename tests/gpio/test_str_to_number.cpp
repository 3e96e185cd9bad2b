#include <gtest/gtest.h>

#include <string>

#include "register_access.h"

namespace {

const unsigned int kUntouched = 0xDEADBEEF;

struct Case {
    const char* text;
    int result;
    unsigned int stored;
};

}  // namespace

TEST(StrToNumber, AcceptsUpTo32BitsAndOnFailureKeepsWhatWasRead)
{
    const Case cases[] = {
        {"", 0, 0}, {"007", 0, 7}, {"4294967295", 0, 0xFFFFFFFF}, {"0XfF", 0, 0xFF},
        {"0xFFFFFFFF", 0, 0xFFFFFFFF}, {"0x000000001", 0, 1},  // leading zeros do not count
        {"0x", 1, kUntouched}, {"12a", 1, 12}, {"5 ", 1, 5}, {"0x12G", 1, 0x12},
        {"4294967296", 1, 429496729}, {"4294967300", 1, 429496730}, {"42949672950", 1, 4294967295u},
        {"0x100000000", 1, 0x10000000},  // a ninth significant hexadecimal digit
        {"-5", 1, 0}, {"+5", 1, 0}, {" 5", 1, 0}, {"x5", 1, 0}, {"0x 5", 1, 0},
    };
    for (const Case& c : cases) {
        std::string text = c.text;
        unsigned int stored = kUntouched;
        EXPECT_EQ(StrToNumber(&text[0], &stored), c.result) << c.text;
        EXPECT_EQ(stored, c.stored) << c.text;
    }
}
