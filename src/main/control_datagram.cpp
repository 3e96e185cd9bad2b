#include "control_datagram.h"

#include <stdio.h>
#include <string.h>

#include <memory>
#include <vector>

#include "file_helpers.h"
#include "path_on_box.h"
#include "runtime_settings.h"
#include "singleton.h"
#include "software_config.h"

namespace {

typedef SoftwareConfig C;

enum Action {
    kControlled,   // prints the address the datagram is aimed at
    kStoreNumber,  // stores the number; sets the switch, if any, to number != 0
    kStoreText,    // stores the text as it is
    kCustomText,   // stores the text and shows it as the custom line
    kSleep,        // stores the number and makes it the page time
    kLedTest,      // LED test mode; not stored
    kReply         // sends the settings file
};

struct Command {
    const char* key;
    Action action;
    int id;      // setting written, -1 for none
    RelaxedAtomic<bool>* flag;  // run-time switch, or nullptr
};

// Tried in this order; the first key that matches is carried out.
const Command kCommands[] = {
    {"controlled", kControlled, -1, nullptr},
    {"oled_type", kStoreNumber, C::OLed_a_kind_start, nullptr},
    {"led_on", kStoreNumber, C::OLed_a_led_start, &led_outside},
    {"oled_str_en", kStoreNumber, C::OLed_a_small_n_start, &oled_string_enable},
    {"oled_string", kCustomText, C::OLed_a_small_n_buf, nullptr},
    {"cpu", kStoreNumber, C::OLed_a_cpu, &oled_display_cpu},
    {"vi", kStoreNumber, C::OLed_a_vi, &oled_display_vi},
    {"ai", kStoreNumber, C::OLed_a_ai, &oled_display_ai},
    {"net", kStoreNumber, C::OLed_a_net, &oled_display_ethspeed},
    {"time", kStoreNumber, C::OLed_a_start, &oled_display_time},
    {"venc", kStoreNumber, C::OLed_a_venc, &oled_display_venc},
    {"temp", kStoreNumber, C::OLed_a_temp, &oled_display_temp},
    {"io", kStoreNumber, C::OLed_a_io, &oled_display_io},
    {"sleep", kSleep, C::OLed_a_sleep_tim, nullptr},
    {"logo", kStoreNumber, C::OLed_a_logo, &oled_display_logo},
    {"port", kStoreNumber, C::OLed_a_gpio_j, nullptr},
    {"sda", kStoreText, C::OLed_ba_SDINMUX, nullptr},
    {"scl", kStoreText, C::OLed_ba_SCLKMUX, nullptr},
    {"cs", kStoreText, C::OLed_ba_CS_MUX, nullptr},
    {"dc", kStoreText, C::OLed_ba_DC_MUX, nullptr},
    {"res", kStoreText, C::OLed_ba_RES_MUX, nullptr},
    {"sml_sda", kStoreText, C::OLed_sml_SDINMUX, nullptr},
    {"sml_scl", kStoreText, C::OLed_sml_SCLKMUX, nullptr},
    {"vcc", kStoreText, C::OLed_sml_VCCMUX, nullptr},
    {"gnd", kStoreText, C::OLed_sml_GNDMUX, nullptr},
    {"pwr_led", kStoreText, C::kLed_pwr_gpio, nullptr},
    {"cpu_led", kStoreText, C::kLed_cpu_gpio, nullptr},
    {"eth_led", kStoreText, C::kLed_eth_gpio, nullptr},
    {"hdmi_led", kStoreText, C::kLed_hdmi_gpio, nullptr},
    {"test", kLedTest, -1, nullptr},
    {"replyoled", kReply, -1, nullptr},
};

// A reply is one datagram: the file beyond what one can carry is not sent.
const size_t kReplyMax = 65507;

const char kSettingsFile[] = "/data/oled.ini";

// A stored text is one line of the settings file: it ends at a line break
// (a tool's trailing newline, or a line that would forge another key).
std::string one_line(const std::string& value)
{
    return value.substr(0, value.find_first_of("\r\n"));
}

const Command* find_command(const std::string& key)
{
    for (size_t i = 0; i < sizeof(kCommands) / sizeof(kCommands[0]); ++i) {
        if (key == kCommands[i].key) {
            return &kCommands[i];
        }
    }
    return nullptr;
}

// "[oled]", a newline and the settings file byte for byte; the header
// alone when the file cannot be read.
std::string settings_reply()
{
    std::string payload = "[oled]\n";
    FILE* f = fopen(path_on_box(kSettingsFile).c_str(), "rb");
    if (f == nullptr) {
        return payload;
    }
    char chunk[4096];
    size_t got;
    while (payload.size() < kReplyMax && (got = fread(chunk, 1, sizeof(chunk), f)) > 0) {
        payload.append(chunk, got);
    }
    fclose(f);
    if (payload.size() > kReplyMax) {
        payload.resize(kReplyMax);
    }
    return payload;
}

// State of one datagram while its items are carried out.
struct Datagram {
    SoftwareConfig& config;
    ReplySender& reply;
    ControlPeer destination;  // of replies: the sender until an item names another
    unsigned int sender_port;
};

void send_reply(const std::string& value, Datagram& datagram)
{
    if (!value.empty()) {
        std::vector<std::string> parts;
        SplitString(value, parts, ":");
        const std::string address = parts.empty() ? std::string() : parts[0];
        if (address.size() > kReplyAddressMax) {
            puts("replyoled: destination address longer than 15 characters, no reply");
            return;
        }
        datagram.destination.address = address;
        // An address alone has no port of its own: the sender's, not one
        // an earlier item of the datagram named.
        datagram.destination.port = parts.size() > 1 ? static_cast<unsigned int>(strtol_(parts[1].c_str(), 10))
                                                     : datagram.sender_port;
    }
    datagram.reply.send(datagram.destination.address.c_str(), datagram.destination.port, settings_reply());
}

void carry_out(const Command& command, const std::string& value, Datagram& datagram)
{
    SoftwareConfig& config = datagram.config;
    const C::SoftWareConfigID id = static_cast<C::SoftWareConfigID>(command.id);
    switch (command.action) {
    case kControlled:
        printf("controlled ip %s\n", value.c_str());
        break;
    case kStoreNumber:
        config.SetConfig(id, str2int(value));
        if (command.flag != nullptr) {
            *command.flag = str2int(value) != 0;
        }
        break;
    case kStoreText:
        config.SetConfig(id, one_line(value));
        break;
    case kCustomText:
        config.SetConfig(id, one_line(value));
        publish_custom_text(one_line(value));
        break;
    case kSleep:
        config.SetConfig(id, str2int(value));
        oled_sleep_time = str2int(value);
        break;
    case kLedTest:
        led_test = str2int(value);
        break;
    case kReply:
        send_reply(value, datagram);
        break;
    }
}

void carry_out_item(const std::string& item, Datagram& datagram)
{
    std::vector<std::string> parts;
    SplitString(item, parts, "=");
    const std::string key = parts.empty() ? std::string() : parts[0];
    const std::string value = parts.size() > 1 ? parts[1] : std::string();
    // Without a value ("cpu", "cpu=") there is nothing to act on; only a
    // reply needs none.
    if (value.empty() && key != "replyoled") {
        return;
    }
    const Command* command = find_command(key);
    if (command == nullptr) {
        puts("you send error command");
        return;
    }
    carry_out(*command, value, datagram);
}

}  // namespace

bool handle_control_datagram(const char* text, long length, const ControlPeer& sender,
                             const std::string& local_address, ReplySender& reply)
{
    if (text == nullptr || length < 2) {
        return false;
    }
    // The command is text: it ends at the size limit or at a zero byte.
    const size_t cut = length < kControlDatagramMax ? static_cast<size_t>(length) : kControlDatagramMax;
    const std::string command_text(text, strnlen(text, cut));

    // Aimed at one box: only the box whose address occurs in it obeys.
    if (command_text.find("controlled") != std::string::npos &&
        command_text.find(local_address) == std::string::npos) {
        return false;
    }

    std::shared_ptr<SoftwareConfig> config = Singleton<SoftwareConfig>::instance();
    Datagram datagram = {*config, reply, sender, sender.port};
    std::vector<std::string> items;
    SplitString(command_text, items, "|");
    for (size_t i = 0; i < items.size(); ++i) {
        carry_out_item(items[i], datagram);
    }

    config->SaveConfig();
    config->ReadConfig();
    config->PrintConfig();
    oled_led_on = led_onboard ? true : led_outside;
    return true;
}
