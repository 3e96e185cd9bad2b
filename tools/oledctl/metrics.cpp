#include "metrics.h"

#include <functional>

#include "settings_view.h"

namespace metrics {
namespace {

using Sample = std::function<void(const fleet::BoxState& box, std::string& out)>;

std::string labels(const fleet::BoxState& box, const std::string& more = "") {
    return "{address=\"" + label_value(box.address) + "\"" + more + "}";
}

void line(std::string& out, const char* name, const std::string& label_text, long value) {
    out += name + label_text + " " + std::to_string(value) + "\n";
}

void family(std::string& out, const char* name, const char* help, const std::vector<fleet::BoxState>& boxes,
            bool answering_only, const Sample& sample) {
    out += std::string("# HELP ") + name + " " + help + "\n# TYPE " + name + " gauge\n";
    for (const fleet::BoxState& box : boxes) {
        if (box.answering || !answering_only) sample(box, out);
    }
}

// A setting's number as a sample (a switch as the box takes it: any
// number but 0 is on); nothing when the box sent none.
void setting(std::string& out, const fleet::BoxState& box, const char* name, const char* key, bool as_switch,
             const std::string& more = "") {
    long value = 0;
    if (!settings_view::number(box.settings, key, value)) return;
    line(out, name, labels(box, more), as_switch ? value != 0 : value);
}

std::string setting_text(const protocol::Settings& settings, const std::string& key) {
    for (const auto& pair : settings) {
        if (pair.first == key) return pair.second;
    }
    return "";
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
    std::string out;
    family(out, "oled_box_up", "1 when the box answered this round, 0 when it answered an earlier one only.", boxes,
           false, [](const fleet::BoxState& box, std::string& text) {
               line(text, "oled_box_up", labels(box), box.answering ? 1 : 0);
           });
    family(out, "oled_box_last_answer_timestamp_seconds", "When the box last answered, in Unix seconds.", boxes,
           false, [](const fleet::BoxState& box, std::string& text) {
               line(text, "oled_box_last_answer_timestamp_seconds", labels(box), static_cast<long>(box.last_answer));
           });
    family(out, "oled_box_info", "The box's panel type and custom text line.", boxes, true,
           [](const fleet::BoxState& box, std::string& text) {
               const std::string panel = settings_view::panel_name(setting_text(box.settings, "OLed_a_kind_start"));
               const std::string custom = setting_text(box.settings, "OLed_a_small_n_buf");
               line(text, "oled_box_info",
                    labels(box, ",panel=\"" + label_value(panel) + "\",custom_text=\"" + label_value(custom) + "\""), 1);
           });
    family(out, "oled_box_sleep_seconds", "Seconds the panel holds each page.", boxes, true,
           [](const fleet::BoxState& box, std::string& text) {
               setting(text, box, "oled_box_sleep_seconds", "OLed_a_sleep_tim", false);
           });
    family(out, "oled_box_led_on", "The outside status LEDs' switch: 1 on, 0 off.", boxes, true,
           [](const fleet::BoxState& box, std::string& text) {
               setting(text, box, "oled_box_led_on", "OLed_a_led_start", true);
           });
    family(out, "oled_box_page_enabled", "1 when the panel shows the page, else 0.", boxes, true,
           [](const fleet::BoxState& box, std::string& text) {
               for (const settings_view::Page& page : settings_view::pages()) {
                   setting(text, box, "oled_box_page_enabled", page.setting, true,
                           ",page=\"" + std::string(page.name) + "\"");
               }
           });
    return out;
}

}  // namespace metrics
