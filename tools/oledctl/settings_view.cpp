#include "settings_view.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstdlib>

namespace settings_view {
namespace {

const std::string* find(const protocol::Settings& settings, const std::string& key)
{
    for (const auto& pair : settings) {
        if (pair.first == key)
            return &pair.second;
    }
    return nullptr;
}

// A number as the box reads it: a leading decimal number; false for text
// that does not start with one (the box reads -1 then).
bool leading_number(const std::string& text, long& value)
{
    const std::size_t digit = !text.empty() && text[0] == '-' ? 1 : 0;
    if (digit >= text.size() || text[digit] < '0' || text[digit] > '9')
        return false;
    value = std::strtol(text.c_str(), nullptr, 10);
    return true;
}

long box_number(const std::string& text)
{
    long value = -1;
    return leading_number(text, value) ? value : -1;
}

// The box takes a flag as on when its number is not zero.
bool flag(const protocol::Settings& settings, const std::string& key)
{
    const std::string* value = find(settings, key);
    return value != nullptr && box_number(*value) != 0;
}

uint32_t address_order(const std::string& address)
{
    in_addr parsed{};
    if (inet_pton(AF_INET, address.c_str(), &parsed) != 1)
        return 0xffffffffu;
    return ntohl(parsed.s_addr);
}

constexpr std::size_t kBoxText = 20;
constexpr std::size_t kKeptPerAnswer = 2048;

}  // namespace

protocol::Settings kept(const protocol::Settings& settings)
{
    protocol::Settings out;
    std::size_t size = 0;
    for (const auto& pair : settings) {
        const std::string value = pair.second.substr(0, kBoxText);
        size += pair.first.size() + value.size() + 2;  // as the line "KEY=VALUE\n"
        if (size > kKeptPerAnswer)
            break;
        out.emplace_back(pair.first, value);
    }
    return out;
}

std::string panel_name(const std::string& type)
{
    static const char* const names[] = {"big",        "old-small",       "none", "small-0.96-4wire", "small-0.96",
                                        "small-1.29", "small-1.29-4wire"};
    const long number = box_number(type);
    if (number >= 0 && number <= 6)
        return names[number];
    return "type-" + type;
}

const std::vector<Page>& pages()
{
    static const std::vector<Page> table = {
        {"cpu", "OLed_a_cpu"},    {"vi", "OLed_a_vi"},
        {"ai", "OLed_a_ai"},      {"net", "OLed_a_net"},
        {"venc", "OLed_a_venc"},  {"temp", "OLed_a_temp"},
        {"time", "OLed_a_start"}, {"io", "OLed_a_io"},
        {"logo", "OLed_a_logo"},  {"text", "OLed_a_small_n_start"},
    };
    return table;
}

bool number(const protocol::Settings& settings, const std::string& key, long& value)
{
    const std::string* text = find(settings, key);
    if (text == nullptr)
        return false;
    return leading_number(*text, value);
}

std::string as_utf8(const std::string& bytes)
{
    std::string out;
    for (unsigned char c : bytes) {
        if (c >= 0x80) {
            out += static_cast<char>(0xc0 | (c >> 6));
            out += static_cast<char>(0x80 | (c & 0x3f));
        } else {
            out += static_cast<char>(c);
        }
    }
    return out;
}

Json json_of(const protocol::Settings& settings)
{
    Json json = Json::object();
    for (const auto& pair : settings)
        json[as_utf8(pair.first)] = as_utf8(pair.second);
    return json;
}

std::string to_json(const protocol::Settings& settings)
{
    return json_of(settings).dump();
}

std::string summary(const std::string& address, const protocol::Settings& settings)
{
    std::string shown;
    for (const Page& page : pages()) {
        if (!flag(settings, page.setting))
            continue;
        if (!shown.empty())
            shown += ',';
        shown += page.name;
    }
    std::string leds;
    if (flag(settings, "OLed_a_led_start"))
        leds = "outside";
    if (flag(settings, "kLed_onboard"))
        leds += leds.empty() ? "onboard" : ",onboard";

    const std::string* type = find(settings, "OLed_a_kind_start");
    const std::string* sleep = find(settings, "OLed_a_sleep_tim");
    std::string line = address;
    line.resize(std::max<std::size_t>(line.size() + 1, 16), ' ');
    line += "panel=" + (type ? panel_name(*type) : std::string("?"));
    line += " sleep=" + (sleep ? *sleep : std::string("?"));
    line += " pages=" + (shown.empty() ? std::string("none") : shown);
    line += " leds=" + (leds.empty() ? std::string("off") : leds);
    return line;
}

std::vector<Box> sorted_unique(std::vector<Box> boxes)
{
    std::vector<Box> unique;
    for (Box& box : boxes) {
        auto same = std::find_if(unique.begin(), unique.end(), [&](const Box& b) { return b.address == box.address; });
        if (same != unique.end()) {
            same->settings = std::move(box.settings);
        } else {
            unique.push_back(std::move(box));
        }
    }
    std::stable_sort(unique.begin(), unique.end(),
                     [](const Box& a, const Box& b) { return address_order(a.address) < address_order(b.address); });
    return unique;
}

std::string to_json(const std::vector<Box>& boxes)
{
    Json list = Json::array();
    for (const Box& box : boxes)
        list.push_back({{"address", box.address}, {"settings", json_of(box.settings)}});
    return list.dump();
}

}  // namespace settings_view
