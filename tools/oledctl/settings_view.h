#ifndef OLEDCTL_SETTINGS_VIEW_H
#define OLEDCTL_SETTINGS_VIEW_H

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "protocol.h"

// How oledctl shows a box's settings to an operator or to a script.
namespace settings_view {

using Json = nlohmann::ordered_json;

// One JSON object of the pairs, values as strings, in file order.
std::string to_json(const protocol::Settings& settings);

// A box's bytes as UTF-8, each byte beyond ASCII taken as Latin-1: a box
// stores bytes, not always UTF-8, and the one rule holds for get --json,
// the fleet API and /metrics alike (0xE9 is always "é").
std::string as_utf8(const std::string& bytes);
// The settings as a JSON object in the box's order.
Json json_of(const protocol::Settings& settings);

// One line: the address, then panel type, page hold time, shown pages and
// LED switches.
std::string summary(const std::string& address, const protocol::Settings& settings);

// What the fleet keeps of a box's answer: each value cut to the 20
// characters a box holds, and pairs up to 2 KiB in all, so that a forged
// answer fills neither memory nor a page nor a metrics label.
protocol::Settings kept(const protocol::Settings& settings);

// The panel kind's name for an OLed_a_kind_start value ("big", ...).
std::string panel_name(const std::string& type);

// The pages a panel can show, by name, with the setting that switches each.
struct Page {
    const char* name;
    const char* setting;
};
const std::vector<Page>& pages();

// The number the box reads from a setting; false when the setting is
// missing or does not start with one.
bool number(const protocol::Settings& settings, const std::string& key, long& value);

struct Box {
    std::string address;
    protocol::Settings settings;
};

// Boxes by address, numerically; one answer per address (the last wins).
std::vector<Box> sorted_unique(std::vector<Box> boxes);

// A JSON array of {"address": ..., "settings": {...}}.
std::string to_json(const std::vector<Box>& boxes);

}  // namespace settings_view

#endif
