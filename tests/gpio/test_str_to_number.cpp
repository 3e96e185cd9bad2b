#include <gtest/gtest.h>

#include <string>

#include "register_access.h"

namespace {

const unsigned int kUntouched = 0xDEADBEEF;

struct Parse {
    int result;
    unsigned int stored;
};

Parse parse(const std::string& text)
{
    std::string copy = text;
    Parse p = {0, kUntouched};
    p.result = StrToNumber(&copy[0], &p.stored);
    return p;
}

}  // namespace

TEST(StrToNumber, AcceptsDecimalAndHexadecimalUpTo32Bits)
{
    const struct {
        const char* text;
        unsigned int value;
    } cases[] = {
        {"", 0},           {"0", 0},
        {"007", 7},        {"429496729", 429496729u},
        {"4294967295", 0xFFFFFFFFu},
        {"0x0", 0},        {"0XfF", 0xFF},
        {"0x12345678", 0x12345678u},
        {"0xFFFFFFFF", 0xFFFFFFFFu},
        {"0x000000001", 1},  // leading zeros do not count
        {"0x0000000000ABCDEF", 0xABCDEF},
    };
    for (const auto& c : cases) {
        Parse p = parse(c.text);
        EXPECT_EQ(p.result, 0) << c.text;
        EXPECT_EQ(p.stored, c.value) << c.text;
    }
}

TEST(StrToNumber, RejectsAndStoresWhatWasReadBeforeTheFault)
{
    const struct {
        const char* text;
        unsigned int stored;
    } cases[] = {
        {"0x", kUntouched},            // bare prefix: nothing stored
        {"12a", 12},                   // stops at the first non-digit
        {"5 ", 5},
        {"4294967296", 429496729u},    // one past 32 bits
        {"4294967300", 429496730u},
        {"42949672950", 4294967295u},  // an eleventh digit never fits
        {"0x100000000", 0x10000000u},  // a ninth significant hex digit
        {"0x12G", 0x12},
        {"0x 5", 0},
        {"-5", 0},                     // no signs, blanks or other prefixes
        {"+5", 0},
        {" 5", 0},
        {"x5", 0},
        {"#10", 0},
    };
    for (const auto& c : cases) {
        Parse p = parse(c.text);
        EXPECT_EQ(p.result, 1) << c.text;
        EXPECT_EQ(p.stored, c.stored) << c.text;
    }
}
