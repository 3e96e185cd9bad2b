#include "led_board.h"

#include <stdio.h>

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
        if (led.wired && soc.is_output(led.group, led.bit)) {
            level = soc.level(led.group, led.bit) != 0 ? "1" : "0";
        }
        out += "  " + json_string(led.key) + ": {\"pin\": " + json_string(led.pin_text) + ", \"level\": " + level + "}";
        out += i + 1 < leds_.size() ? ",\n" : "\n";
    }
    return out + "}\n";
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
