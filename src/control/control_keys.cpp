#include "control_keys.h"

#include <stdio.h>
#include <stdlib.h>

#include "pin_text.h"

namespace {

typedef ControlEffect Effect;
typedef ControlValueKind Kind;

// The panel's custom line holds 20 characters; the box copies at most 21
// bytes, and a 21-byte text would lose its terminator there.
const long kCustomTextMax = 20;

std::string number_text(long long number)
{
    char text[24];
    snprintf(text, sizeof(text), "%lld", number);
    return text;
}

bool all_digits(const std::string& text)
{
    if (text.empty()) {
        return false;
    }
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] < '0' || text[i] > '9') {
            return false;
        }
    }
    return true;
}

// Decimal text, an optional minus first; too long for any range keeps its
// sign, so the range check speaks.
bool read_integer(const std::string& text, long long& number)
{
    const bool negative = !text.empty() && text[0] == '-';
    const std::string digits = negative ? text.substr(1) : text;
    if (!all_digits(digits)) {
        return false;
    }
    const long long huge = 1000000000000000000LL;
    number = digits.size() > 18 ? (negative ? -huge : huge) : strtoll(text.c_str(), nullptr, 10);
    return true;
}

std::string integer_problem(const ControlKey& key, const std::string& value)
{
    long long number = 0;
    const std::string name = key.key;
    if (!read_integer(value, number)) {
        return name + ": '" + shown_value(value) + "' is not a decimal integer";
    }
    if (number < key.min || number > key.max) {
        return name + ": " + shown_value(value) + " is out of range " + number_text(key.min) + ".." +
               number_text(key.max);
    }
    return "";
}

std::string text_problem(const ControlKey& key, const std::string& value)
{
    const std::string name = key.key;
    for (size_t i = 0; i < value.size(); ++i) {
        if (value[i] < ' ' || value[i] > '~') {
            return name + ": only printable ASCII characters can be shown";
        }
    }
    if (static_cast<long>(value.size()) > key.max) {
        return name + ": " + number_text(static_cast<long long>(value.size())) +
               " characters, the panel shows at most " + number_text(key.max);
    }
    return "";
}

}  // namespace

const ControlKey kControlKeys[] = {
    {"controlled", Effect::Marker, Kind::Text, 0, 0, "", "aims the datagram at the box with this address"},
    {"oled_type", Effect::StoreOnly, Kind::Integer, 0, 6, "OLed_a_kind_start",
     "panel: 0 big, 1 old small, 2 none, 3..6 small kinds (next start)"},
    {"led_on", Effect::Switch, Kind::Integer, 0, 1, "OLed_a_led_start", "front LEDs on/off"},
    {"oled_str_en", Effect::Switch, Kind::Integer, 0, 1, "OLed_a_small_n_start", "show the custom text"},
    {"oled_string", Effect::CustomText, Kind::Text, 1, kCustomTextMax, "OLed_a_small_n_buf", "custom text"},
    {"cpu", Effect::Switch, Kind::Integer, 0, 1, "OLed_a_cpu", "page: CPU load"},
    {"vi", Effect::Switch, Kind::Integer, 0, 1, "OLed_a_vi", "page: video input"},
    {"ai", Effect::Switch, Kind::Integer, 0, 1, "OLed_a_ai", "page: audio input"},
    {"net", Effect::Switch, Kind::Integer, 0, 1, "OLed_a_net", "page: Ethernet speed"},
    {"time", Effect::Switch, Kind::Integer, 0, 1, "OLed_a_start", "page: uptime"},
    {"venc", Effect::Switch, Kind::Integer, 0, 1, "OLed_a_venc", "page: encoder"},
    {"temp", Effect::Switch, Kind::Integer, 0, 1, "OLed_a_temp", "page: temperature"},
    {"io", Effect::Switch, Kind::Integer, 0, 1, "OLed_a_io", "page: I/O and relays"},
    // At 0 a loop would draw and start its probes without pause.
    {"sleep", Effect::SleepTime, Kind::Integer, 1, 3600, "OLed_a_sleep_tim", "seconds each page is held"},
    {"logo", Effect::Switch, Kind::Integer, 0, 1, "OLed_a_logo", "play the logo (big panel)"},
    {"port", Effect::StoreOnly, Kind::Integer, 0, 65535, "OLed_a_gpio_j", "stored only"},
    {"sda", Effect::StoreOnly, Kind::Pin, 0, 0, "OLed_ba_SDINMUX", "big panel data pin (next start)"},
    {"scl", Effect::StoreOnly, Kind::Pin, 0, 0, "OLed_ba_SCLKMUX", "big panel clock pin"},
    {"cs", Effect::StoreOnly, Kind::Pin, 0, 0, "OLed_ba_CS_MUX", "big panel chip select pin"},
    {"dc", Effect::StoreOnly, Kind::Pin, 0, 0, "OLed_ba_DC_MUX", "big panel data/command pin"},
    {"res", Effect::StoreOnly, Kind::Pin, 0, 0, "OLed_ba_RES_MUX", "big panel reset pin"},
    {"sml_sda", Effect::StoreOnly, Kind::Pin, 0, 0, "OLed_sml_SDINMUX", "small panel data pin"},
    {"sml_scl", Effect::StoreOnly, Kind::Pin, 0, 0, "OLed_sml_SCLKMUX", "small panel clock pin"},
    {"vcc", Effect::StoreOnly, Kind::Pin, 0, 0, "OLed_sml_VCCMUX", "small panel supply pin"},
    {"gnd", Effect::StoreOnly, Kind::Pin, 0, 0, "OLed_sml_GNDMUX", "small panel ground pin"},
    {"pwr_led", Effect::StoreOnly, Kind::Pin, 0, 0, "kLed_pwr_gpio", "power LED pin"},
    {"cpu_led", Effect::StoreOnly, Kind::Pin, 0, 0, "kLed_cpu_gpio", "CPU LED pin"},
    {"eth_led", Effect::StoreOnly, Kind::Pin, 0, 0, "kLed_eth_gpio", "Ethernet LED pin"},
    {"hdmi_led", Effect::StoreOnly, Kind::Pin, 0, 0, "kLed_hdmi_gpio", "video LED pin"},
    {"test", Effect::LedTest, Kind::Integer, 0, 2147483647L, "", "LED test: non-zero lights the LEDs (not stored)"},
    {"replyoled", Effect::Reply, Kind::Text, 0, 0, "", "sends the settings file to ADDRESS:PORT, or to the sender"},
    {"replystats", Effect::Stats, Kind::Text, 0, 0, "",
     "sends what the box took and refused since it started, to the sender"},
};

const size_t kControlKeyCount = sizeof(kControlKeys) / sizeof(kControlKeys[0]);

const ControlKey* find_control_key(const std::string& key)
{
    for (size_t i = 0; i < kControlKeyCount; ++i) {
        if (key == kControlKeys[i].key) {
            return &kControlKeys[i];
        }
    }
    return nullptr;
}

bool parse_pin(const std::string& text, int& group, int& bit)
{
    // Stricter in form than the settings file: digits alone, as the tool
    // writes them, then read as every pin text is.
    const size_t bar = text.find('_');
    const std::string group_text = text.substr(0, bar);
    const std::string bit_text = bar == std::string::npos ? "" : text.substr(bar + 1);
    return all_digits(group_text) && all_digits(bit_text) && group_text.size() <= 2 && bit_text.size() == 1 &&
           read_pin_text(text, group, bit) && pin_exists(group, bit);
}

std::string control_value_problem(const ControlKey& key, const std::string& value)
{
    switch (key.kind) {
        case Kind::Integer:
            return integer_problem(key, value);
        case Kind::Text:
            return key.effect == Effect::CustomText ? text_problem(key, value) : std::string();
        case Kind::Pin: {
            int group = 0;
            int bit = 0;
            if (value == "0" || parse_pin(value, group, bit)) {
                return "";
            }
            return std::string(key.key) + ": '" + shown_value(value) + "' is not a pin: GROUP_BIT (group 0.." +
                   number_text(kPinGroups - 1) + ", bit 0.." + number_text(kPinBits - 1) + ") or 0 for none";
        }
    }
    return "";
}

std::string shown_value(const std::string& value, size_t most)
{
    std::string shown;
    for (size_t i = 0; i < value.size() && i < most; ++i) {
        const unsigned char c = static_cast<unsigned char>(value[i]);
        if (c >= ' ' && c <= '~') {
            shown += static_cast<char>(c);
        } else {
            char escaped[8];
            snprintf(escaped, sizeof(escaped), "\\x%02x", c);
            shown += escaped;
        }
    }
    return value.size() > most ? shown + "..." : shown;
}
