#include "pgm_render.h"

#include <regex>

namespace {

// The simulator's own names for its seven LED settings, short for a line.
struct LedName {
    const char* key;
    const char* label;
};

const LedName kLeds[] = {
    {"kLed_pwr_gpio", "pwr"},     {"kLed_eth_gpio", "eth"},       {"kLed_cpu_gpio", "cpu"},
    {"kLed_hdmi_gpio", "video"},  {"kLed_eth_onboard", "eth"},    {"kLed_cpu_onboard", "cpu"},
    {"kLed_hdmi_onboard", "video"},
};

}  // namespace

std::string render_led_line(const std::string& json)
{
    std::string line = "outside:";
    for (size_t i = 0; i < sizeof(kLeds) / sizeof(kLeds[0]); ++i) {
        if (i == 4) {
            line += "   onboard:";
        }
        const std::regex entry(std::string("\"") + kLeds[i].key + "\"\\s*:\\s*\\{[^}]*\"on\"\\s*:\\s*(null|true|false)");
        std::smatch match;
        std::string mark = "-";  // no pin
        if (std::regex_search(json, match, entry) && match[1] != "null") {
            mark = match[1] == "true" ? "ON" : "off";
        }
        line += " " + std::string(kLeds[i].label) + "=" + mark;
    }
    return line + "\n";
}
