#include <gtest/gtest.h>

#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <string>

#include "box_settings.h"
#include "gpio_master.h"
#include "led_board.h"
#include "output_files.h"
#include "register_trace.h"
#include "soc.h"

namespace {

typedef SoftwareConfig C;

BoxSettings box_with(std::initializer_list<std::pair<C::SoftWareConfigID, const char*> > values)
{
    BoxSettings box;
    box.board = "BRD25";
    box.values = SoftwareConfig::DefaultValues("BRD25");
    for (const auto& value : values) {
        box.values[value.first] = value.second;
    }
    return box;
}

std::string leds_json(const char* eth, const char* cpu, const char* hdmi, const char* pwr, const char* eth_onboard)
{
    return std::string("{\n") +
           "  \"kLed_eth_gpio\": {\"pin\": \"5_3\", \"level\": " + eth + "},\n" +
           "  \"kLed_cpu_gpio\": {\"pin\": \"12_0\", \"level\": " + cpu + "},\n" +
           "  \"kLed_hdmi_gpio\": {\"pin\": \"7\", \"level\": " + hdmi + "},\n" +
           "  \"kLed_pwr_gpio\": {\"pin\": \"30_1\", \"level\": " + pwr + "},\n" +
           "  \"kLed_eth_onboard\": {\"pin\": \"5_4\", \"level\": " + eth_onboard + "},\n" +
           "  \"kLed_cpu_onboard\": {\"pin\": \"0\", \"level\": null},\n" +
           "  \"kLed_hdmi_onboard\": {\"pin\": \"a\\\"\\\\b\", \"level\": null}\n" +
           "}\n";
}

BoxSettings led_box()
{
    return box_with({{C::kLed_eth_gpio, "5_3"},
                     {C::kLed_cpu_gpio, "12_0"},
                     {C::kLed_hdmi_gpio, "7"},
                     {C::kLed_pwr_gpio, "30_1"},
                     {C::kLed_eth_onboard, "5_4"},
                     {C::kLed_hdmi_onboard, "a\"\\b"}});
}

std::string read_file(const std::string& path)
{
    std::ifstream in(path.c_str());
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

}  // namespace

TEST(LedBoard, ShowsEachLedPinsLevelOnlyWhileItIsAnOutput)
{
    RegisterTrace trace;
    LedBoard board(led_box());
    EXPECT_EQ(board.json(), leds_json("null", "null", "null", "null", "null"));

    GPIOMaster gpio;
    SimSoc::instance().set_input_level(5, 3, 1);  // an input's level is no LED level
    gpio.set_gpio_direction(5, 3, 1);
    gpio.set_gpio_direction(12, 0, 1);
    gpio.set_gpio_value(12, 0, 1);
    gpio.set_gpio_value(5, 4, 1);  // 5_4 is still an input
    EXPECT_EQ(board.json(), leds_json("0", "1", "null", "null", "null"));

    gpio.set_gpio_direction(5, 4, 1);
    gpio.set_gpio_value(12, 0, 0);
    EXPECT_EQ(board.json(), leds_json("0", "0", "null", "null", "1"));
    gpio.set_gpio_direction(5, 3, 0);
    EXPECT_EQ(board.json(), leds_json("null", "0", "null", "null", "1"));
}

TEST(LedBoard, ModeSwitchHoldsItsPinAtTheGivenLevel)
{
    RegisterTrace trace;
    SimSoc& soc = SimSoc::instance();
    set_mode_switch(box_with({}), 1);  // BRD25's switch is 7_6
    EXPECT_EQ(soc.level(7, 6), 1);
    set_mode_switch(box_with({}), 0);
    EXPECT_EQ(soc.level(7, 6), 0);

    set_mode_switch(box_with({{C::kSwitch_gpio, "2_4"}}), 1);
    EXPECT_EQ(soc.level(2, 4), 1);
    set_mode_switch(box_with({{C::kSwitch_gpio, "24"}}), 1);  // no pin, nothing held
    for (int group = 0; group < 25; ++group) {
        for (int bit = 0; bit < 8; ++bit) {
            EXPECT_EQ(soc.level(group, bit), group == 2 && bit == 4 ? 1 : 0);
        }
    }
}

TEST(LedBoard, LedsFileIsWrittenAndFollowsRegisterStores)
{
    RegisterTrace trace;
    char folder[] = "/tmp/oled-leds-XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    OutputFiles& files = OutputFiles::instance();
    files.set_folder(folder);
    wire_led_board(led_box(), 0);
    files.flush();
    const std::string path = std::string(folder) + "/leds.json";
    EXPECT_EQ(read_file(path), leds_json("null", "null", "null", "null", "null"));

    GPIOMaster gpio;
    gpio.set_gpio_direction(5, 4, 1);
    gpio.set_gpio_value(5, 4, 1);
    files.flush();
    EXPECT_EQ(read_file(path), leds_json("null", "null", "null", "null", "1"));

    files.stop();
    unlink(path.c_str());
    rmdir(folder);
}
