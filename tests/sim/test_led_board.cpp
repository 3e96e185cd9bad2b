#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "gpio_master.h"
#include "led_board.h"
#include "output_files.h"
#include "register_trace.h"
#include "soc.h"

namespace {

typedef SoftwareConfig C;

BoxSettings led_box(const char* switch_pin)
{
    BoxSettings box;
    box.values = SoftwareConfig::DefaultValues("BRD25");
    box.values[C::kLed_eth_gpio] = "5_3";
    box.values[C::kLed_cpu_gpio] = "12_0";
    box.values[C::kLed_hdmi_gpio] = "7";
    box.values[C::kLed_pwr_gpio] = "30_1";
    box.values[C::kLed_hdmi_onboard] = "a\"\\b";
    box.values[C::kSwitch_gpio] = switch_pin;
    box.values[C::kLed_outside_value] = "1";
    return box;
}

// The outside set is lit by a high level here (kLed_outside_value 1).
std::string led_state(const char* level)
{
    const std::string on = std::string(level) == "null" ? "null" : (std::string(level) == "1" ? "true" : "false");
    return std::string(level) + ", \"on\": " + on;
}

std::string leds_json(const char* eth, const char* cpu)
{
    return std::string("{\n  \"kLed_eth_gpio\": {\"pin\": \"5_3\", \"level\": ") + led_state(eth) +
           "},\n  \"kLed_cpu_gpio\": {\"pin\": \"12_0\", \"level\": " + led_state(cpu) +
           "},\n  \"kLed_hdmi_gpio\": {\"pin\": \"7\", \"level\": null, \"on\": null},\n"
           "  \"kLed_pwr_gpio\": {\"pin\": \"30_1\", \"level\": null, \"on\": null},\n"
           "  \"kLed_eth_onboard\": {\"pin\": \"0\", \"level\": null, \"on\": null},\n"
           "  \"kLed_cpu_onboard\": {\"pin\": \"0\", \"level\": null, \"on\": null},\n"
           "  \"kLed_hdmi_onboard\": {\"pin\": \"a\\\"\\\\b\", \"level\": null, \"on\": null}\n}\n";
}

}  // namespace

// The file follows every store that changes what an LED shows: a level,
// or a direction that makes its pin an output or an input again.
TEST(LedBoard, LedsFileShowsEachLedPinsLevelWhileItIsAnOutput)
{
    RegisterTrace trace;
    char folder[] = "/tmp/oled-leds-XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    const std::string path = std::string(folder) + "/leds.json";
    auto file_text = [&path] {
        OutputFiles::instance().flush();
        std::ifstream in(path.c_str());
        return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    };
    OutputFiles::instance().set_folder(folder);
    wire_led_board(led_box("2_4"), 1);
    EXPECT_EQ(SimSoc::instance().load(0x12170000 + (0xFF << 2)), 0x10u);  // the switch reads high
    GPIOMaster gpio;
    SimSoc::instance().set_input_level(5, 3, 1);  // an input's level is no LED level
    gpio.set_gpio_value(12, 0, 1);
    EXPECT_EQ(file_text(), leds_json("null", "null"));
    gpio.set_gpio_direction(5, 3, 1);
    gpio.set_gpio_direction(12, 0, 1);
    EXPECT_EQ(file_text(), leds_json("0", "1"));
    gpio.set_gpio_value(5, 3, 1);
    gpio.set_gpio_direction(12, 0, 0);
    EXPECT_EQ(file_text(), leds_json("1", "null"));

    OutputFiles::instance().stop();
    remove(path.c_str());
    remove(folder);
}
