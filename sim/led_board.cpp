#include "led_board.h"

#include <cjson/cJSON.h>
#include <stdio.h>

#include "file_helpers.h"
#include "output_files.h"
#include "soc.h"

namespace {

typedef SoftwareConfig Config;

const Config::SoftWareConfigID kLedSettings[] = {
    Config::kLed_eth_gpio,    Config::kLed_cpu_gpio,    Config::kLed_hdmi_gpio,    Config::kLed_pwr_gpio,
    Config::kLed_eth_onboard, Config::kLed_cpu_onboard, Config::kLed_hdmi_onboard,
};

}  // namespace

LedBoard::LedBoard(const BoxSettings& box)
{
    for (Config::SoftWareConfigID id : kLedSettings) {
        Led led;
        led.key = SoftwareConfig::KeyName(id);
        led.pin_text = box.get(id);
        led.wired = parse_pin(led.pin_text, &led.group, &led.bit);
        // Each set has its own "on" level: LEDs wired active-high and
        // active-low are both served.
        const bool onboard =
            id == Config::kLed_eth_onboard || id == Config::kLed_cpu_onboard || id == Config::kLed_hdmi_onboard;
        led.lit_when_high = str2int(box.get(onboard ? Config::kLed_onboard_value : Config::kLed_outside_value)) != 0;
        leds_.push_back(led);
    }
}

std::string LedBoard::json() const
{
    SimSoc& soc = SimSoc::instance();
    cJSON* all = cJSON_CreateObject();
    for (const Led& led : leds_) {
        cJSON* entry = cJSON_AddObjectToObject(all, led.key.c_str());
        cJSON_AddStringToObject(entry, "pin", led.pin_text.c_str());
        // null while the pin is no GPIO output
        if (led.wired && soc.is_output(led.group, led.bit)) {
            const bool high = soc.level(led.group, led.bit) != 0;
            cJSON_AddNumberToObject(entry, "level", high ? 1 : 0);
            cJSON_AddBoolToObject(entry, "on", high == led.lit_when_high);
        } else {
            cJSON_AddNullToObject(entry, "level");
            cJSON_AddNullToObject(entry, "on");
        }
    }
    char* text = cJSON_Print(all);
    const std::string out = text != nullptr ? std::string(text) + "\n" : std::string();
    cJSON_free(text);
    cJSON_Delete(all);
    return out;
}

std::vector<NamedPin> led_pins(const BoxSettings& box)
{
    std::vector<NamedPin> pins;
    for (Config::SoftWareConfigID id : kLedSettings) {
        NamedPin led;
        led.name = SoftwareConfig::KeyName(id);
        if (parse_pin(box.get(id), &led.pin.group, &led.pin.bit)) {
            pins.push_back(led);
        }
    }
    return pins;
}

void set_mode_switch(const BoxSettings& box, int level)
{
    int group = 0;
    int bit = 0;
    if (parse_pin(box.get(Config::kSwitch_gpio), &group, &bit)) {
        SimSoc::instance().set_input_level(group, bit, level);
    }
}

void wire_led_board(const BoxSettings& box, int switch_level)
{
    set_mode_switch(box, switch_level);
    OutputFiles& files = OutputFiles::instance();
    if (files.folder().empty()) {
        return;
    }
    // Never destroyed: daemon threads may still store while the process
    // exits, and every store reaches the board's callback.
    static const LedBoard* board = new LedBoard(box);
    const int file = files.add("leds.json", [] { return board->json(); });
    // Any store may change an LED: a level, or a direction that turns a pin
    // into an output (or back). The file is rendered at most every 50 ms and
    // only rewritten when its text changes.
    SimSoc::instance().on_change([file] { OutputFiles::instance().mark_dirty(file); });
}
