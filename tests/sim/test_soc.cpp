#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "register_trace.h"
#include "soc.h"

namespace {

const uint32_t kGroup5 = 0x121A0000;

uint32_t alias(uint32_t mask)
{
    return kGroup5 + (mask << 2);
}

}  // namespace

TEST(SimSoc, MaskedDataRegisterWritesAndReadsOnlyTheMaskedBits)
{
    RegisterTrace trace;
    SimSoc& soc = SimSoc::instance();
    soc.store(kGroup5 + 0x400, 0xFF);
    soc.store(alias(0x0F), 0xFF);
    EXPECT_EQ(soc.load(alias(0xFF)), 0x0Fu);
    soc.store(alias(0x3C), 0x00);
    EXPECT_EQ(soc.load(alias(0xFF)), 0x03u);
    soc.store(alias(0xA0), 0xFF);
    EXPECT_EQ(soc.load(alias(0xFF)), 0xA3u);
    EXPECT_EQ(soc.load(alias(0x06)), 0x02u);
    EXPECT_EQ(soc.load(alias(0x81)), 0x81u);

    // Inputs read the level held on the pin, outputs their data bit.
    soc.store(kGroup5 + 0x400, 0x0F);
    soc.set_input_level(5, 4, 1);
    EXPECT_EQ(soc.load(alias(0xFF)), 0x13u);
    EXPECT_EQ(soc.level(5, 7), 0);
    EXPECT_EQ(soc.level(5, 4), 1);
    EXPECT_EQ(soc.load(kGroup5 + 0x400), 0x0Fu);
}

TEST(SimSoc, DevicesHearEachLevelChangeOfTheirPinInWriteOrder)
{
    RegisterTrace trace;
    SimSoc& soc = SimSoc::instance();
    std::vector<std::pair<int, int> > heard;  // (bit, level)
    soc.watch(5, 1, [&heard](int group, int bit, int level) {
        EXPECT_EQ(group, 5);
        heard.push_back(std::make_pair(bit, level));
    });
    soc.watch(5, 6, [&heard](int, int bit, int level) { heard.push_back(std::make_pair(bit, level)); });
    int stores_seen = 0;
    soc.on_change([&stores_seen] { ++stores_seen; });

    soc.set_input_level(5, 6, 1);  // an input going high is a change
    soc.store(kGroup5 + 0x400, 0xFF);  // 5_6 becomes an output driving 0
    soc.store(alias(0x42), 0xFF);      // 5_1 and 5_6 high in one write
    soc.store(alias(0x42), 0xFF);      // no change
    soc.store(alias(0x02), 0x00);
    soc.store(alias(0x01), 0x01);      // 5_0 is not watched
    EXPECT_EQ(heard, (std::vector<std::pair<int, int> >{{6, 1}, {6, 0}, {1, 1}, {6, 1}, {1, 0}}));
    EXPECT_EQ(stores_seen, 5);
}

TEST(SimSoc, ChangeCallbacksAreBoundedAndClearedByReset)
{
    RegisterTrace trace;
    SimSoc& soc = SimSoc::instance();
    int calls = 0;
    for (int i = 0; i < SimSoc::kMaxChangeCallbacks; ++i) {
        EXPECT_TRUE(soc.on_change([&calls] { ++calls; }));
    }
    EXPECT_FALSE(soc.on_change([&calls] { calls += 100; }));
    soc.store(0x120F0000, 1);
    EXPECT_EQ(calls, SimSoc::kMaxChangeCallbacks);

    soc.reset();
    soc.store(0x120F0000, 1);
    EXPECT_EQ(calls, SimSoc::kMaxChangeCallbacks);
    EXPECT_TRUE(soc.on_change([&calls] { ++calls; }));
}
