#include "metrics.h"

#include <cstdio>
#include <functional>

#include "settings_view.h"

namespace metrics {
namespace {

// The labels that name whose sample it is: the address in /metrics,
// nothing in a probe (Prometheus adds the target as instance).
struct Shown {
    std::string own;
    const protocol::Settings* settings;
};

using Sample = std::function<void(const Shown& shown, std::string& out)>;

std::string labels(const std::string& own, const std::string& more = "") {
    const std::string inside = own.empty() || more.empty() ? own + more : own + "," + more;
    return inside.empty() ? "" : "{" + inside + "}";
}

std::string address_label(const fleet::BoxState& box) { return "address=\"" + label_value(box.address) + "\""; }

void head(std::string& out, const char* name, const char* help) {
    out += std::string("# HELP ") + name + " " + help + "\n# TYPE " + name + " gauge\n";
}

void line(std::string& out, const char* name, const std::string& label_text, const std::string& value) {
    out += name + label_text + " " + value + "\n";
}

void line(std::string& out, const char* name, const std::string& label_text, long value) {
    line(out, name, label_text, std::to_string(value));
}

void family(std::string& out, const char* name, const char* help, const std::vector<Shown>& shown,
            const Sample& sample) {
    head(out, name, help);
    for (const Shown& one : shown) sample(one, out);
}

// A setting's number as a sample (a switch as the box takes it: any
// number but 0 is on); nothing when the box sent none.
void setting(std::string& out, const Shown& shown, const char* name, const char* key, bool as_switch,
             const std::string& more = "") {
    long value = 0;
    if (!settings_view::number(*shown.settings, key, value)) return;
    line(out, name, labels(shown.own, more), as_switch ? value != 0 : value);
}

std::string setting_text(const protocol::Settings& settings, const std::string& key) {
    for (const auto& pair : settings) {
        if (pair.first == key) return pair.second;
    }
    return "";
}

// The series a box's settings make, for each box that just answered.
void settings_families(std::string& out, const std::vector<Shown>& shown) {
    family(out, "oled_box_info", "The box's panel type and custom text line.", shown,
           [](const Shown& box, std::string& text) {
               const std::string panel = settings_view::panel_name(setting_text(*box.settings, "OLed_a_kind_start"));
               const std::string custom = setting_text(*box.settings, "OLed_a_small_n_buf");
               line(text, "oled_box_info",
                    labels(box.own, "panel=\"" + label_value(panel) + "\",custom_text=\"" + label_value(custom) + "\""),
                    1);
           });
    family(out, "oled_box_sleep_seconds", "Seconds the panel holds each page.", shown,
           [](const Shown& box, std::string& text) {
               setting(text, box, "oled_box_sleep_seconds", "OLed_a_sleep_tim", false);
           });
    family(out, "oled_box_led_on", "The outside status LEDs' switch: 1 on, 0 off.", shown,
           [](const Shown& box, std::string& text) {
               setting(text, box, "oled_box_led_on", "OLed_a_led_start", true);
           });
    family(out, "oled_box_page_enabled", "1 when the panel shows the page, else 0.", shown,
           [](const Shown& box, std::string& text) {
               for (const settings_view::Page& page : settings_view::pages()) {
                   setting(text, box, "oled_box_page_enabled", page.setting, true,
                           "page=\"" + std::string(page.name) + "\"");
               }
           });
}

}  // namespace

std::string label_value(const std::string& text) {
    std::string out;
    for (unsigned char c : text) {
        if (c == '\\') {
            out += "\\\\";
        } else if (c == '"') {
            out += "\\\"";
        } else if (c == '\n') {
            out += "\\n";
        } else if (c >= 0x80) {
            out += static_cast<char>(0xc0 | (c >> 6));
            out += static_cast<char>(0x80 | (c & 0x3f));
        } else {
            out += static_cast<char>(c);
        }
    }
    return out;
}

std::string exposition(const std::vector<fleet::BoxState>& boxes) {
    std::vector<Shown> known;
    std::vector<Shown> answering;
    for (const fleet::BoxState& box : boxes) {
        known.push_back({address_label(box), &box.settings});
        if (box.answering) answering.push_back(known.back());
    }
    std::string out;
    head(out, "oled_box_up", "1 when the box answered this round, 0 when it answered an earlier one only.");
    for (std::size_t i = 0; i < boxes.size(); ++i) line(out, "oled_box_up", labels(known[i].own), boxes[i].answering);
    head(out, "oled_box_last_answer_timestamp_seconds", "When the box last answered, in Unix seconds.");
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        line(out, "oled_box_last_answer_timestamp_seconds", labels(known[i].own),
             static_cast<long>(boxes[i].last_answer));
    }
    settings_families(out, answering);
    return out;
}

std::string probe(bool answered, double seconds, const protocol::Settings& settings) {
    std::string out;
    head(out, "oled_probe_success", "1 when the box answered the probe's question, else 0.");
    line(out, "oled_probe_success", "", answered);
    char duration[32];
    std::snprintf(duration, sizeof duration, "%.6f", seconds);
    head(out, "oled_probe_duration_seconds", "Seconds from the question to the answer, or the whole wait.");
    line(out, "oled_probe_duration_seconds", "", duration);
    if (answered) settings_families(out, {{"", &settings}});
    return out;
}

}  // namespace metrics
