#include <gtest/gtest.h>

#include "register_trace.h"
#include "soc.h"

namespace {

const uint32_t kGroup5 = 0x121A0000;

uint32_t alias(uint32_t mask)
{
    return kGroup5 + (mask << 2);
}

}  // namespace

TEST(SimSoc, MaskedDataRegisterChangesAndReadsOnlyTheMaskedBits)
{
    RegisterTrace trace;
    SimSoc& soc = SimSoc::instance();
    std::vector<std::pair<int, int>> heard;  // (bit, level) of the watched pins 5_1 and 5_6
    for (int bit : {1, 6}) {
        soc.watch(5, bit, [&heard](int, int b, int level) { heard.push_back(std::make_pair(b, level)); });
    }
    soc.store(kGroup5 + 0x400, 0xFF);
    soc.store(alias(0x4F), 0xFF);  // 5_0 .. 5_3 and 5_6 high in one write
    soc.store(alias(0x3C), 0x00);
    soc.store(alias(0xA0), 0xFF);
    EXPECT_EQ(soc.load(alias(0xFF)), 0xE3u);
    EXPECT_EQ(soc.load(alias(0x06)), 0x02u);
    soc.store(kGroup5 + 0x400, 0x0F);  // 5_4 .. 5_7 read their input level
    soc.set_input_level(5, 4, 1);
    EXPECT_EQ(soc.load(alias(0xFF)), 0x13u);
    EXPECT_EQ(heard, (std::vector<std::pair<int, int>>{{1, 1}, {6, 1}, {6, 0}}));
}
