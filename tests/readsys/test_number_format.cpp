#include <gtest/gtest.h>

#include <climits>

#include "number_format.h"
#include "probe_text.h"

TEST(NumberFormat, WritesAndReadsNumbersAsTheClassicStreamDoes)
{
    EXPECT_EQ(itos(INT_MIN), "-2147483648");
    EXPECT_EQ(ftos(3.14159274f), "3.14159");
    EXPECT_EQ(ftos(25.0f), "25");
    EXPECT_EQ(ftos(1000000.0f), "1e+06");
    EXPECT_EQ(ftos(0.00001f), "1e-05");
    EXPECT_EQ(ftos(123456.7f), "123457");
    EXPECT_EQ(strtoint(" 1000 "), 1000);
    EXPECT_EQ(strtoint("10 5"), 10);
    EXPECT_EQ(strtoint("abc"), 0);
    EXPECT_EQ(strtoint("   "), 0);
    EXPECT_EQ(strtoint("-99999999999"), INT_MIN);
    EXPECT_FLOAT_EQ(::stof("45 5"), 45.0f);
    EXPECT_FLOAT_EQ(::stof(" 2.5e2x"), 250.0f);
    EXPECT_FLOAT_EQ(::stof("x1"), 0.0f);
}

TEST(ProbeText, TurnsAThrowingProbeIntoAnEmptyText)
{
    EXPECT_EQ(probe_text([]() { return std::string("ab").substr(3); }), "");
    EXPECT_EQ(probe_text([]() -> std::string { throw 7; }), "");
    EXPECT_EQ(probe_text([]() { return std::string("VO:_;"); }), "VO:_;");
}
