#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "gpio_master.h"
#include "register_trace.h"
#include "soc.h"

namespace {
typedef std::vector<std::string> Lines;
}

TEST(GpioMaster, LevelsAreSingleWritesToThePinsDataAlias)
{
    RegisterTrace trace;
    GPIOMaster gpio;
    EXPECT_EQ(gpio.set_gpio_value(4, 2, 1), 0);
    EXPECT_EQ(gpio.set_gpio_value(4, 2, 0), 0);
    EXPECT_EQ(gpio.set_gpio_value(24, 7, 1), 0);
    EXPECT_EQ(gpio.set_gpio_value(0, 0, 1), 0);
    EXPECT_EQ(trace.lines(), (Lines{"12190010 00000004", "12190010 00000000", "122D0200 00000080", "12150004 00000001"}));

    unsigned int addr = 0;
    unsigned int high = 1;
    unsigned int low = 1;
    EXPECT_EQ(gpio.get_gpio_addr(12, 5, &addr, &high, &low), 0);
    EXPECT_EQ(addr, 0x12210080u);
    EXPECT_EQ(high, 0x20u);
    EXPECT_EQ(low, 0u);
}

TEST(GpioMaster, DirectionChangeKeepsTheOtherPinsOfTheGroup)
{
    RegisterTrace trace;
    SimSoc::instance().store(0x12210400, 0xA4);
    trace.clear();
    GPIOMaster gpio;
    EXPECT_EQ(gpio.set_gpio_direction(12, 0, 1), 0);
    EXPECT_EQ(gpio.set_gpio_direction(12, 2, 0), 0);
    EXPECT_EQ(gpio.set_gpio_direction(12, 3, 2), 0);  // neither input nor output: no write
    EXPECT_EQ(trace.lines(), (Lines{"12210400 000000A5", "12210400 000000A1"}));
    EXPECT_TRUE(SimSoc::instance().is_output(12, 0));
    EXPECT_FALSE(SimSoc::instance().is_output(12, 2));
}

TEST(GpioMaster, MuxWritesTheGpioFunctionOfThePad)
{
    RegisterTrace trace;
    GPIOMaster gpio;
    EXPECT_EQ(gpio.pin_mux_gpio(12, 2), 0);
    EXPECT_EQ(gpio.pin_mux_gpio(18, 0), 0);
    EXPECT_EQ(gpio.pin_mux_gpio(13, 1), 0);  // shares its pad register with 11_7
    EXPECT_EQ(gpio.pin_mux_gpio(0, 7), 0);
    EXPECT_EQ(trace.lines(), (Lines{"120F00E4 00000001", "120F01F8 00000002", "120F014C 00000003", "120F01F0 00000000"}));
    EXPECT_EQ(SimSoc::instance().mux_value(0xE4), 1u);

    // Placeholder pads (another pin's pad, or none at all) are left alone.
    trace.clear();
    EXPECT_EQ(gpio.pin_mux_gpio(20, 0), 0);
    EXPECT_EQ(gpio.pin_mux_gpio(20, 4), 0);
    EXPECT_EQ(gpio.pin_mux_gpio(24, 6), 0);
    EXPECT_EQ(gpio.pin_mux_gpio(20, 5), 0);
    EXPECT_EQ(trace.lines(), (Lines{"120F0270 00000000"}));
}

TEST(GpioMaster, PinsOutOfRangeTouchNothing)
{
    RegisterTrace trace;
    GPIOMaster gpio;
    unsigned int addr = 7;
    unsigned int high = 7;
    unsigned int low = 7;
    unsigned int value = 7;
    const int pins[][2] = {{4, 8}, {25, 0}, {-1, 0}, {0, -1}, {100, 100}};
    for (const auto& pin : pins) {
        EXPECT_EQ(gpio.pin_mux_gpio(pin[0], pin[1]), -1);
        EXPECT_EQ(gpio.set_gpio_direction(pin[0], pin[1], 1), -1);
        EXPECT_EQ(gpio.set_gpio_value(pin[0], pin[1], 1), -1);
        EXPECT_EQ(gpio.get_gpio_addr(pin[0], pin[1], &addr, &high, &low), -1);
        EXPECT_EQ(gpio.get_gpio_value(pin[0], pin[1], &value), -1);
    }
    EXPECT_EQ(SimSoc::instance().stores(), 0u);
    EXPECT_EQ(addr + high + low + value, 28u);
}

TEST(GpioMaster, ReadGivesThePinsBitUnreduced)
{
    RegisterTrace trace;
    SimSoc& soc = SimSoc::instance();
    GPIOMaster gpio;
    unsigned int value = 99;

    soc.set_input_level(7, 3, 1);
    EXPECT_EQ(gpio.get_gpio_value(7, 3, &value), 0);
    EXPECT_EQ(value, 8u);
    soc.set_input_level(7, 3, 0);
    gpio.get_gpio_value(7, 3, &value);
    EXPECT_EQ(value, 0u);

    gpio.set_gpio_direction(2, 3, 1);
    gpio.set_gpio_value(2, 3, 1);
    gpio.set_gpio_value(2, 4, 1);  // a neighbour high does not show
    gpio.get_gpio_value(2, 3, &value);
    EXPECT_EQ(value, 8u);
    gpio.set_gpio_value(2, 3, 0);
    gpio.get_gpio_value(2, 3, &value);
    EXPECT_EQ(value, 0u);
}
