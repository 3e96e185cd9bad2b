#include "pgm_render.h"

#include <cjson/cJSON.h>

namespace {

// The simulator's own names for its seven LED settings, short for a line.
struct LedName {
    const char* key;
    const char* label;
};

const LedName kLeds[] = {
    {"kLed_pwr_gpio", "pwr"},       {"kLed_eth_gpio", "eth"},    {"kLed_cpu_gpio", "cpu"},
    {"kLed_hdmi_gpio", "video"},    {"kLed_eth_onboard", "eth"}, {"kLed_cpu_onboard", "cpu"},
    {"kLed_hdmi_onboard", "video"},
};

}  // namespace

std::string render_led_line(const std::string& json)
{
    cJSON* all = cJSON_Parse(json.c_str());
    std::string line = "outside:";
    for (size_t i = 0; i < sizeof(kLeds) / sizeof(kLeds[0]); ++i) {
        if (i == 4) {
            line += "   onboard:";
        }
        const cJSON* on = cJSON_GetObjectItemCaseSensitive(cJSON_GetObjectItemCaseSensitive(all, kLeds[i].key), "on");
        const char* mark = cJSON_IsTrue(on) ? "ON" : cJSON_IsFalse(on) ? "off" : "-";  // "-": no pin
        line += " " + std::string(kLeds[i].label) + "=" + mark;
    }
    cJSON_Delete(all);
    return line + "\n";
}
