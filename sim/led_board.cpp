#include "led_board.h"

#include <stdio.h>

#include "file_helpers.h"
#include "output_files.h"
#include "soc.h"

namespace {

typedef SoftwareConfig C;

const C::SoftWareConfigID kLedSettings[] = {
    C::kLed_eth_gpio,    C::kLed_cpu_gpio,    C::kLed_hdmi_gpio,    C::kLed_pwr_gpio,
    C::kLed_eth_onboard, C::kLed_cpu_onboard, C::kLed_hdmi_onboard,
};

std::string json_string(const std::string& text)
{
    std::string out = "\"";
    for (std::string::size_type i = 0; i < text.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += static_cast<char>(c);
        } else if (c < 0x20) {
            char escaped[8];
            snprintf(escaped, sizeof(escaped), "\\u%04x", c);
            out += escaped;
        } else {
            out += static_cast<char>(c);
        }
    }
    return out + "\"";
}

}  // namespace

LedBoard::LedBoard(const BoxSettings& box)
{
    for (C::SoftWareConfigID id : kLedSettings) {
        Led led;
        led.key = SoftwareConfig::KeyName(id);
        led.pin_text = box.get(id);
        led.wired = parse_pin(led.pin_text, &led.group, &led.bit);
        // Each set has its own "on" level: LEDs wired active-high and
        // active-low are both served.
        const bool onboard = id == C::kLed_eth_onboard || id == C::kLed_cpu_onboard || id == C::kLed_hdmi_onboard;
        led.lit_when_high = str2int(box.get(onboard ? C::kLed_onboard_value : C::kLed_outside_value)) != 0;
        leds_.push_back(led);
    }
}

std::string LedBoard::json() const
{
    SimSoc& soc = SimSoc::instance();
    std::string out = "{\n";
    for (size_t i = 0; i < leds_.size(); ++i) {
        const Led& led = leds_[i];
        std::string level = "null";
        std::string on = "null";
        if (led.wired && soc.is_output(led.group, led.bit)) {
            const bool high = soc.level(led.group, led.bit) != 0;
            level = high ? "1" : "0";
            on = high == led.lit_when_high ? "true" : "false";
        }
        out += "  " + json_string(led.key) + ": {\"pin\": " + json_string(led.pin_text) + ", \"level\": " + level +
               ", \"on\": " + on + "}";
        out += i + 1 < leds_.size() ? ",\n" : "\n";
    }
    return out + "}\n";
}

std::vector<NamedPin> led_pins(const BoxSettings& box)
{
    std::vector<NamedPin> pins;
    for (C::SoftWareConfigID id : kLedSettings) {
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
    if (parse_pin(box.get(C::kSwitch_gpio), &group, &bit)) {
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
