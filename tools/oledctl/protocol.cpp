#include "protocol.h"

#include <arpa/inet.h>

#include <climits>
#include <cstdlib>

namespace protocol {
namespace {

// Pins are GPIO group 0..24, bit 0..7, as the SoC has them.
constexpr int kLastGroup = 24;
constexpr int kLastBit = 7;
// The panel's custom line holds 20 characters; the box copies at most 21
// bytes and a 21-byte text would lose its terminator there.
constexpr long kMaxCustomText = 20;

const char* kUnknownHint = " (oledctl set --help lists the keys)";

bool all_digits(const std::string& text) {
    if (text.empty()) return false;
    for (char c : text) {
        if (c < '0' || c > '9') return false;
    }
    return true;
}

// Decimal text into value; false for anything else.
bool read_integer(const std::string& text, long& value) {
    const bool negative = !text.empty() && text[0] == '-';
    const std::string digits = negative ? text.substr(1) : text;
    if (!all_digits(digits)) return false;
    // Too long for any range: keep the sign, so the range check speaks.
    value = digits.size() > 10 ? (negative ? LONG_MIN : LONG_MAX) : std::strtol(text.c_str(), nullptr, 10);
    return true;
}

std::string check_integer(const Command& command, const std::string& value) {
    long number = 0;
    const std::string key = command.key;
    if (!read_integer(value, number)) return key + ": '" + value + "' is not a decimal integer";
    if (number < command.min || number > command.max) {
        return key + ": " + value + " is out of range " + std::to_string(command.min) + ".." +
               std::to_string(command.max);
    }
    return "";
}

std::string check_text(const Command& command, const std::string& value) {
    const std::string key = command.key;
    for (char c : value) {
        if (c < ' ' || c > '~') return key + ": only printable ASCII characters can be shown";
    }
    if (static_cast<long>(value.size()) > command.max) {
        return key + ": " + std::to_string(value.size()) + " characters, the panel shows at most " +
               std::to_string(command.max);
    }
    // The marker word anywhere in a datagram narrows it to one box.
    if (value.find("controlled") != std::string::npos) return key + ": the word 'controlled' cannot be sent";
    return "";
}

std::string check_pin(const Command& command, const std::string& value) {
    const std::string key = command.key;
    const std::string usage = key + ": '" + value + "' is not a pin: GROUP_BIT (group 0.." +
                              std::to_string(kLastGroup) + ", bit 0.." + std::to_string(kLastBit) +
                              ") or 0 for none";
    if (value == "0") return "";
    const std::size_t bar = value.find('_');
    if (bar == std::string::npos) return usage;
    const std::string group = value.substr(0, bar);
    const std::string bit = value.substr(bar + 1);
    if (!all_digits(group) || !all_digits(bit) || group.size() > 2 || bit.size() > 1) return usage;
    if (std::atoi(group.c_str()) > kLastGroup || std::atoi(bit.c_str()) > kLastBit) return usage;
    return "";
}

}  // namespace

const std::vector<Command>& command_table() {
    static const std::vector<Command> table = {
        {"oled_type", ValueKind::Integer, 0, 6, "OLed_a_kind_start",
         "panel: 0 big, 1 old small, 2 none, 3..6 small kinds (next start)"},
        {"led_on", ValueKind::Integer, 0, 1, "OLed_a_led_start", "front LEDs on/off"},
        {"oled_str_en", ValueKind::Integer, 0, 1, "OLed_a_small_n_start", "show the custom text"},
        {"oled_string", ValueKind::Text, 1, kMaxCustomText, "OLed_a_small_n_buf", "custom text"},
        {"cpu", ValueKind::Integer, 0, 1, "OLed_a_cpu", "page: CPU load"},
        {"vi", ValueKind::Integer, 0, 1, "OLed_a_vi", "page: video input"},
        {"ai", ValueKind::Integer, 0, 1, "OLed_a_ai", "page: audio input"},
        {"net", ValueKind::Integer, 0, 1, "OLed_a_net", "page: Ethernet speed"},
        {"time", ValueKind::Integer, 0, 1, "OLed_a_start", "page: uptime"},
        {"venc", ValueKind::Integer, 0, 1, "OLed_a_venc", "page: encoder"},
        {"temp", ValueKind::Integer, 0, 1, "OLed_a_temp", "page: temperature"},
        {"io", ValueKind::Integer, 0, 1, "OLed_a_io", "page: I/O and relays"},
        {"sleep", ValueKind::Integer, 0, 3600, "OLed_a_sleep_tim", "seconds each page is held"},
        {"logo", ValueKind::Integer, 0, 1, "OLed_a_logo", "play the logo (big panel)"},
        {"port", ValueKind::Integer, 0, 65535, "OLed_a_gpio_j", "stored only"},
        {"sda", ValueKind::Pin, 0, 0, "OLed_ba_SDINMUX", "big panel data pin (next start)"},
        {"scl", ValueKind::Pin, 0, 0, "OLed_ba_SCLKMUX", "big panel clock pin"},
        {"cs", ValueKind::Pin, 0, 0, "OLed_ba_CS_MUX", "big panel chip select pin"},
        {"dc", ValueKind::Pin, 0, 0, "OLed_ba_DC_MUX", "big panel data/command pin"},
        {"res", ValueKind::Pin, 0, 0, "OLed_ba_RES_MUX", "big panel reset pin"},
        {"sml_sda", ValueKind::Pin, 0, 0, "OLed_sml_SDINMUX", "small panel data pin"},
        {"sml_scl", ValueKind::Pin, 0, 0, "OLed_sml_SCLKMUX", "small panel clock pin"},
        {"vcc", ValueKind::Pin, 0, 0, "OLed_sml_VCCMUX", "small panel supply pin"},
        {"gnd", ValueKind::Pin, 0, 0, "OLed_sml_GNDMUX", "small panel ground pin"},
        {"pwr_led", ValueKind::Pin, 0, 0, "kLed_pwr_gpio", "power LED pin"},
        {"cpu_led", ValueKind::Pin, 0, 0, "kLed_cpu_gpio", "CPU LED pin"},
        {"eth_led", ValueKind::Pin, 0, 0, "kLed_eth_gpio", "Ethernet LED pin"},
        {"hdmi_led", ValueKind::Pin, 0, 0, "kLed_hdmi_gpio", "video LED pin"},
        {"test", ValueKind::Integer, 0, 2147483647L, "", "LED test: non-zero lights the LEDs (not stored)"},
    };
    return table;
}

const Command* find_command(const std::string& key) {
    for (const Command& command : command_table()) {
        if (key == command.key) return &command;
    }
    return nullptr;
}

std::string check_item(const std::string& item) {
    const std::size_t equals = item.find('=');
    if (equals == std::string::npos) return "'" + item + "': expected KEY=VALUE";
    const std::string key = item.substr(0, equals);
    const std::string value = item.substr(equals + 1);
    if (key == "controlled") return "controlled: use --box ADDR --via-group";
    if (key == "replyoled") return "replyoled: use 'oledctl get'";
    const Command* command = find_command(key);
    if (command == nullptr) return "'" + key + "': unknown key" + kUnknownHint;
    if (value.empty()) return key + ": empty value";
    if (value.find_first_of("|=") != std::string::npos) return key + ": a value may not contain '|' or '='";
    switch (command->kind) {
        case ValueKind::Integer:
            return check_integer(*command, value);
        case ValueKind::Text:
            return check_text(*command, value);
        case ValueKind::Pin:
            return check_pin(*command, value);
    }
    return "";
}

std::string build_set(const std::vector<std::string>& items, const std::string& target) {
    std::string datagram;
    if (!target.empty()) datagram = "controlled=" + target;
    for (const std::string& item : items) {
        if (!datagram.empty()) datagram += '|';
        datagram += item;
    }
    return datagram;
}

std::string build_query() { return "replyoled"; }

bool parse_reply(const std::string& payload, Settings& settings) {
    const std::string header = kReplyHeader;
    if (payload.compare(0, header.size(), header) != 0) return false;
    std::size_t start = header.size();
    while (start < payload.size()) {
        std::size_t end = payload.find('\n', start);
        if (end == std::string::npos) end = payload.size();
        std::string line = payload.substr(start, end - start);
        if (!line.empty() && line.back() == '\r') line.pop_back();
        const std::size_t equals = line.find('=');
        if (equals != std::string::npos) settings.emplace_back(line.substr(0, equals), line.substr(equals + 1));
        start = end + 1;
    }
    return true;
}

bool is_ipv4(const std::string& text) {
    in_addr address{};
    return inet_pton(AF_INET, text.c_str(), &address) == 1;
}

}  // namespace protocol
