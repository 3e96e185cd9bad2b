#include "control_datagram.h"

#include <arpa/inet.h>
#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <memory>

#include "board_defaults.h"
#include "control_keys.h"
#include "control_stats.h"
#include "datagram_auth.h"
#include "file_helpers.h"
#include "path_on_box.h"
#include "runtime_settings.h"
#include "settings_saver.h"
#include "singleton.h"
#include "software_config.h"

namespace {

typedef SoftwareConfig Config;

// The run-time switch each switch key sets to value != 0.
struct SwitchFlag {
    const char* key;
    RelaxedAtomic<bool>* flag;
};

const SwitchFlag kSwitchFlags[] = {
    {"led_on", &led_outside},     {"oled_str_en", &oled_string_enable},
    {"cpu", &oled_display_cpu},   {"vi", &oled_display_vi},
    {"ai", &oled_display_ai},     {"net", &oled_display_ethspeed},
    {"time", &oled_display_time}, {"venc", &oled_display_venc},
    {"temp", &oled_display_temp}, {"io", &oled_display_io},
    {"logo", &oled_display_logo},
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

RelaxedAtomic<bool>* switch_flag(const char* key)
{
    for (const SwitchFlag& entry : kSwitchFlags) {
        if (strcmp(entry.key, key) == 0) {
            return entry.flag;
        }
    }
    return nullptr;
}

Config::SoftWareConfigID setting_id(const char* name)
{
    for (int id = 0; id < Config::kConfigCount; ++id) {
        if (strcmp(Config::KeyName(id), name) == 0) {
            return static_cast<Config::SoftWareConfigID>(id);
        }
    }
    return Config::kConfigCount;
}

int pin_number(const std::string& text)
{
    int group = 0;
    int bit = 0;
    return parse_pin(text, group, bit) ? group * 8 + bit : -1;
}

// "[oled]", a newline and the settings file byte for byte; the header
// alone when the file cannot be read.
std::string settings_reply()
{
    std::string payload = "[oled]\n";
    FILE* f = fopen(path_on_box(kSettingsFile).c_str(), "rbe");
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

// Addresses a reply never goes to: they would reach the box's own local
// services (loopback, "this network") or every host (multicast, broadcast
// and the reserved block under it).
bool no_reply_address(const std::string& address, const std::vector<uint32_t>& own)
{
    in_addr parsed;
    if (inet_aton(address.c_str(), &parsed) == 0) {
        return true;
    }
    const uint32_t host = ntohl(parsed.s_addr);
    const uint32_t first = host >> 24;
    return first == 0 || first == 127 || first >= 224 || std::find(own.begin(), own.end(), parsed.s_addr) != own.end();
}

// State of one datagram while its items are carried out.
struct Datagram {
    SoftwareConfig& config;
    const ControlContext& context;
    const ControlPeer& sender;
    ControlPeer destination;  // of replies: the sender until an item names another
    unsigned int sender_port;
    const std::string* unsaved;  // the settings waiting to be written, or nullptr
    bool signed_query;           // carried a signature made with the box's key
    bool replied;                // a datagram gets one reply, however many it asks
};

void count(const ControlContext& context, unsigned long ControlStats::*what)
{
    if (context.stats != nullptr) {
        ++(context.stats->*what);
    }
}

void send_reply(const std::string& value, Datagram& datagram)
{
    if (datagram.replied) {
        return;
    }
    datagram.replied = true;
    if (!value.empty()) {
        std::vector<std::string> parts;
        SplitString(value, parts, ":");
        const std::string address = parts.empty() ? std::string() : parts[0];
        if (address.size() > kReplyAddressMax) {
            puts("replyoled: destination address longer than 15 characters, no reply");
            count(datagram.context, &ControlStats::held_refused_destination);
            return;
        }
        datagram.destination.address = address;
        // An address alone has no port of its own: the sender's, not one
        // an earlier item of the datagram named.
        datagram.destination.port =
            parts.size() > 1 ? static_cast<unsigned int>(strtol_(parts[1].c_str(), 10)) : datagram.sender_port;
    }
    const std::string& address = datagram.destination.address;
    if (no_reply_address(address, datagram.context.own_addresses)) {
        printf("replyoled: no reply to %s (the box's own, loopback, multicast, broadcast or unspecified)\n",
               shown_value(address).c_str());
        count(datagram.context, &ControlStats::held_refused_destination);
        return;
    }
    // While a save waits, the file is behind the settings: the reply shows
    // them as they will be saved.
    const std::string payload = datagram.unsaved != nullptr ? "[oled]\n" + *datagram.unsaved : settings_reply();
    datagram.context.reply->send(address.c_str(), datagram.destination.port, payload, datagram.signed_query);
}

// The counts go to the sender alone, within the datagram's one reply.
void send_stats(Datagram& datagram)
{
    const ControlContext& context = datagram.context;
    if (datagram.replied || context.stats == nullptr) {
        return;
    }
    datagram.replied = true;
    ControlStats stats = *context.stats;
    stats.counter_saves = context.auth != nullptr ? context.auth->counter_saves() : 0;
    const std::string payload = stats_reply(stats, context.saver->saves(), context.started);
    context.reply->send(datagram.sender.address.c_str(), datagram.sender.port, payload, datagram.signed_query);
}

// Why the box refuses value for key, "" when it takes it.
std::string refusal(const ControlKey& key, const std::string& value, const ControlContext& context)
{
    const std::string problem = control_value_problem(key, value);
    if (!problem.empty() || key.kind != ControlValueKind::Pin || value == "0") {
        return problem;
    }
    const PinsAtStart::const_iterator own = context.pins.find(key.setting);
    if (own == context.pins.end() ||
        std::find(own->second.begin(), own->second.end(), pin_number(value)) == own->second.end()) {
        return std::string(key.key) + ": " + value +
               " is neither its pin at start nor the board's default for it (other pins are set in /data/oled.ini on "
               "the box)";
    }
    return "";
}

void carry_out(const ControlKey& key, const std::string& value, Datagram& datagram)
{
    SoftwareConfig& config = datagram.config;
    const Config::SoftWareConfigID id = setting_id(key.setting);
    switch (key.effect) {
        case ControlEffect::Marker:
            printf("controlled ip %s\n", shown_value(value, value.size()).c_str());
            break;
        case ControlEffect::Switch:
            if (RelaxedAtomic<bool>* flag = switch_flag(key.key)) {
                *flag = str2int(value) != 0;
            }
            config.SetConfig(id, str2int(value));
            break;
        case ControlEffect::StoreOnly:
            if (key.kind == ControlValueKind::Integer) {
                config.SetConfig(id, str2int(value));
            } else {
                config.SetConfig(id, value);
            }
            break;
        case ControlEffect::CustomText:
            config.SetConfig(id, value);
            publish_custom_text(value);
            break;
        case ControlEffect::SleepTime:
            config.SetConfig(id, str2int(value));
            oled_sleep_time = str2int(value);
            break;
        case ControlEffect::LedTest:
            led_test = str2int(value);
            break;
        case ControlEffect::Reply:
            send_reply(value, datagram);
            break;
        case ControlEffect::Stats:
            send_stats(datagram);
            break;
    }
}

// One item of a datagram, taken apart once.
struct Item {
    std::string key;
    std::string value;          // up to its first line break; "" is no value
    const ControlKey* command;  // nullptr: no key of the protocol
};

std::vector<Item> items_of(const std::string& text)
{
    std::vector<std::string> texts;
    SplitString(text, texts, "|");
    std::vector<Item> items;
    for (size_t i = 0; i < texts.size(); ++i) {
        std::vector<std::string> parts;
        SplitString(texts[i], parts, "=");
        Item item;
        item.key = parts.empty() ? std::string() : parts[0];
        item.value = parts.size() > 1 ? one_line(parts[1]) : std::string();
        item.command = find_control_key(item.key);
        items.push_back(item);
    }
    return items;
}

void carry_out_item(const Item& item, Datagram& datagram)
{
    // Without a value ("cpu", "cpu=") there is nothing to act on; only the
    // queries need none.
    const bool query = item.key == "replyoled" || item.key == "replystats";
    if (item.value.empty() && !query) {
        return;
    }
    if (item.command == nullptr) {
        puts("you send error command");
        count(datagram.context, &ControlStats::items_unknown_key);
        return;
    }
    const std::string refused = refusal(*item.command, item.value, datagram.context);
    if (!refused.empty()) {
        printf("item refused, %s\n", refused.c_str());
        count(datagram.context, &ControlStats::items_bad_value);
        return;
    }
    carry_out(*item.command, item.value, datagram);
    const ControlEffect effect = item.command->effect;
    if (effect != ControlEffect::Reply && effect != ControlEffect::Stats && effect != ControlEffect::Marker) {
        count(datagram.context, &ControlStats::changes_applied);
    }
}

// Whether an item would change the box or send a reply elsewhere than to
// its sender: only a key can allow that.
bool needs_key(const Item& item, const ControlPeer& sender)
{
    if (item.command == nullptr || item.value.empty() || item.command->effect == ControlEffect::Marker ||
        item.command->effect == ControlEffect::Stats) {
        return false;
    }
    return item.command->effect != ControlEffect::Reply || item.value.substr(0, item.value.find(':')) != sender.address;
}

// On a box that asks for a key, a datagram that needs one is carried out
// only when signed with it for destination. A query that needs none is
// answered whatever its signature, from the operators' share when the
// signature holds.
void count_refusal(DatagramAuth::Refusal why, ControlStats* stats)
{
    if (stats == nullptr) {
        return;
    }
    switch (why) {
        case DatagramAuth::kNotSigned:
            ++stats->not_signed;
            break;
        case DatagramAuth::kWrongMac:
            ++stats->wrong_mac;
            break;
        case DatagramAuth::kOldCounter:
            ++stats->old_counter;
            break;
        case DatagramAuth::kUnusable:
            ++stats->unusable_key_or_counter;
            break;
        case DatagramAuth::kNone:
            break;
    }
}

bool permitted(const std::vector<Item>& items, const Signature& signature, const ControlPeer& sender,
               const std::string& destination, DatagramAuth& auth, bool& signed_query, ControlStats* stats)
{
    bool needed = false;
    for (size_t i = 0; i < items.size(); ++i) {
        needed = needed || needs_key(items[i], sender);
    }
    if (!needed) {
        signed_query = signature.present && auth.accept(signature, destination, false).empty();
        return true;
    }
    const std::string refused = auth.accept(signature, destination, true);
    if (!refused.empty()) {
        printf("refused a datagram from %s:%u: %s\n", sender.address.c_str(), sender.port, refused.c_str());
        count_refusal(auth.refused_as(), stats);
    }
    signed_query = refused.empty();
    return refused.empty();
}

}  // namespace

PinsAtStart pins_at_start()
{
    std::shared_ptr<SoftwareConfig> config = Singleton<SoftwareConfig>::instance();
    const std::vector<std::string> defaults = SoftwareConfig::DefaultValues(hw_info);
    PinsAtStart pins;
    for (size_t i = 0; i < kControlKeyCount; ++i) {
        const ControlKey& key = kControlKeys[i];
        const Config::SoftWareConfigID id = setting_id(key.setting);
        if (key.kind == ControlValueKind::Pin && id != Config::kConfigCount) {
            std::vector<int>& own = pins[key.setting];
            own.push_back(pin_number(config->GetConfig(id)));
            own.push_back(pin_number(defaults[id]));
        }
    }
    return pins;
}

bool handle_control_datagram(const char* text, long length, const ControlPeer& sender, const std::string& destination,
                             ControlContext& context, int64_t now_ms)
{
    count(context, &ControlStats::datagrams_received);
    if (text == nullptr || length < 2) {
        return false;
    }
    // The command is text: it ends at the size limit or at a zero byte.
    const size_t cut = length < kControlDatagramMax ? static_cast<size_t>(length) : kControlDatagramMax;
    std::string command_text(text, strnlen(text, cut));

    // Aimed at one box: only the box whose address occurs in it obeys, and
    // a box that does not know its address obeys none (the empty text
    // occurs in every text).
    if (command_text.find("controlled") != std::string::npos &&
        (context.local_address.empty() || command_text.find(context.local_address) == std::string::npos)) {
        count(context, &ControlStats::aimed_elsewhere);
        return false;
    }
    // Whether a key is asked for is settled before the server starts; its
    // signature is taken off either way.
    const bool keyed = context.auth != nullptr && context.auth->required();
    const Signature signature = keyed ? take_signature(command_text) : Signature();
    const std::vector<Item> items = items_of(command_text);
    bool signed_query = false;
    if (keyed && !permitted(items, signature, sender, destination, *context.auth, signed_query, context.stats)) {
        return false;
    }

    std::shared_ptr<SoftwareConfig> config = Singleton<SoftwareConfig>::instance();
    context.saver->change(now_ms, [&](const std::string* unsaved) {
        Datagram datagram = {*config, context, sender, sender, sender.port, unsaved, signed_query, false};
        for (size_t i = 0; i < items.size(); ++i) {
            carry_out_item(items[i], datagram);
        }
    });
    oled_led_on = led_onboard ? true : led_outside;
    return true;
}
