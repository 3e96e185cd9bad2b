#include <gtest/gtest.h>
#include <stdio.h>

#include <fstream>
#include <sstream>

#include "gpio_master.h"
#include "register_trace.h"
#include "soc.h"

typedef std::vector<unsigned int> Words;
typedef std::vector<std::string> Lines;

TEST(GpioMaster, WritesAndReadsTheRegistersOfThePin)
{
    RegisterTrace trace;
    SimSoc::instance().store(0x12210400, 0xA4);
    SimSoc::instance().set_input_level(7, 3, 1);
    trace.clear();
    GPIOMaster gpio;
    gpio.set_gpio_value(4, 2, 1);
    gpio.set_gpio_value(4, 2, 0);
    gpio.set_gpio_direction(12, 0, 1);  // read-modify-write keeps the other bits
    gpio.set_gpio_direction(12, 2, 0);
    gpio.set_gpio_direction(12, 3, 2);  // neither input nor output: no write
    EXPECT_EQ(trace.lines(),
              (Lines{"12190010 00000004", "12190010 00000000", "12210400 000000A5", "12210400 000000A1"}));
    unsigned int addr = 0, high = 0, low = 1, value = 0;
    gpio.get_gpio_addr(24, 7, &addr, &high, &low);
    gpio.get_gpio_value(7, 3, &value);
    EXPECT_EQ((Words{addr, high, low, value}), (Words{0x122D0200, 0x80, 0, 0x8}));  // a high pin 3 reads 8
}

TEST(GpioMaster, PinsOutOfRangeTouchNothing)
{
    RegisterTrace trace;
    GPIOMaster gpio;
    unsigned int untouched = 7;
    for (const auto& pin :
         {std::make_pair(4, 8), std::make_pair(25, 0), std::make_pair(-1, 0), std::make_pair(0, -1)}) {
        EXPECT_EQ(gpio.pin_mux_gpio(pin.first, pin.second) + gpio.set_gpio_direction(pin.first, pin.second, 1) +
                      gpio.set_gpio_value(pin.first, pin.second, 1) +
                      gpio.get_gpio_addr(pin.first, pin.second, &untouched, &untouched, &untouched) +
                      gpio.get_gpio_value(pin.first, pin.second, &untouched),
                  -5);
    }
    EXPECT_EQ(SimSoc::instance().stores(), 0u);
    EXPECT_EQ(untouched, 7u);
}

TEST(GpioMaster, EveryPinRoutesItsOwnPad)
{
    std::ifstream in(OLED_PADS);
    std::string line;
    int pins = 0;
    while (std::getline(in, line)) {
        std::istringstream row(line);
        int group = -1;
        std::string cell;
        if (line[0] == '#' || !(row >> group >> cell)) {
            continue;
        }
        for (int bit = 0; row >> cell; ++bit, ++pins) {
            unsigned int offset = 0, value = 0;
            char expected[20] = "";
            if (sscanf(cell.c_str(), "%x/%u", &offset, &value) == 2) {
                snprintf(expected, sizeof(expected), "%08X %08X", 0x120F0000 + offset, value);
            }
            RegisterTrace trace;
            GPIOMaster().pin_mux_gpio(group, bit);
            EXPECT_EQ(trace.lines(), expected[0] ? Lines{expected} : Lines{}) << group << "_" << bit;
        }
    }
    EXPECT_EQ(pins, 200);
}
