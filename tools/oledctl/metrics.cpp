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

std::string labels(const std::string& own, const std::string& more = "")
{
    const std::string inside = own.empty() || more.empty() ? own + more : own + "," + more;
    return inside.empty() ? "" : "{" + inside + "}";
}

std::string address_label(const fleet::BoxState& box)
{
    return "address=\"" + label_value(box.address) + "\"";
}

void head(std::string& out, const char* name, const char* help)
{
    out += std::string("# HELP ") + name + " " + help + "\n# TYPE " + name + " gauge\n";
}

void line(std::string& out, const char* name, const std::string& label_text, const std::string& value)
{
    out += name + label_text + " " + value + "\n";
}

void line(std::string& out, const char* name, const std::string& label_text, long value)
{
    line(out, name, label_text, std::to_string(value));
}

void family(std::string& out, const char* name, const char* help, const std::vector<Shown>& shown, const Sample& sample)
{
    head(out, name, help);
    for (const Shown& one : shown)
        sample(one, out);
}

// A setting's number as a sample (a switch as the box takes it: any
// number but 0 is on); nothing when the box sent none.
void setting(std::string& out, const Shown& shown, const char* name, const char* key, bool as_switch,
             const std::string& more = "")
{
    long value = 0;
    if (!settings_view::number(*shown.settings, key, value))
        return;
    line(out, name, labels(shown.own, more), as_switch ? value != 0 : value);
}

std::string setting_text(const protocol::Settings& settings, const std::string& key)
{
    for (const auto& pair : settings) {
        if (pair.first == key)
            return pair.second;
    }
    return "";
}

// The series a box's settings make, for each box that just answered.
void settings_families(std::string& out, const std::vector<Shown>& shown)
{
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
    family(
        out, "oled_box_led_on", "The outside status LEDs' switch: 1 on, 0 off.", shown,
        [](const Shown& box, std::string& text) { setting(text, box, "oled_box_led_on", "OLed_a_led_start", true); });
    family(out, "oled_box_page_enabled", "1 when the panel shows the page, else 0.", shown,
           [](const Shown& box, std::string& text) {
               for (const settings_view::Page& page : settings_view::pages()) {
                   setting(text, box, "oled_box_page_enabled", page.setting, true,
                           "page=\"" + std::string(page.name) + "\"");
               }
           });
}

}  // namespace

std::string label_value(const std::string& text)
{
    std::string out;
    for (unsigned char c : text) {
        if (c == '\\') {
            out += "\\\\";
        } else if (c == '"') {
            out += "\\\"";
        } else if (c == '\n') {
            out += "\\n";
        } else if (c >= 0x80) {
            out += settings_view::as_utf8(std::string(1, static_cast<char>(c)));
        } else {
            out += static_cast<char>(c);
        }
    }
    return out;
}

namespace {

// The box's counts as series: key in its reply, family, label.
struct StatSeries {
    const char* key;
    const char* family;
    const char* label;
};

const StatSeries kStatSeries[] = {
    {"datagrams_received", "oled_box_datagrams_received_total", ""},
    {"changes_applied", "oled_box_changes_applied_total", ""},
    {"items_refused_bad_value", "oled_box_items_refused_total", "reason=\"bad_value\""},
    {"items_refused_unknown_key", "oled_box_items_refused_total", "reason=\"unknown_key\""},
    {"items_refused_aimed_elsewhere", "oled_box_items_refused_total", "reason=\"aimed_elsewhere\""},
    {"datagrams_refused_not_signed", "oled_box_datagrams_refused_total", "reason=\"not_signed\""},
    {"datagrams_refused_wrong_mac", "oled_box_datagrams_refused_total", "reason=\"wrong_mac\""},
    {"datagrams_refused_old_counter", "oled_box_datagrams_refused_total", "reason=\"old_counter\""},
    {"datagrams_refused_unusable_key_or_counter", "oled_box_datagrams_refused_total",
     "reason=\"unusable_key_or_counter\""},
    {"replies_sent", "oled_box_replies_sent_total", ""},
    {"reply_bytes_sent", "oled_box_reply_bytes_sent_total", ""},
    {"replies_held_per_destination", "oled_box_replies_held_total", "cause=\"per_destination\""},
    {"replies_held_whole_box", "oled_box_replies_held_total", "cause=\"whole_box\""},
    {"replies_held_refused_destination", "oled_box_replies_held_total", "cause=\"refused_destination\""},
    {"reply_bytes_held_per_destination", "oled_box_reply_bytes_held_total", "cause=\"per_destination\""},
    {"reply_bytes_held_whole_box", "oled_box_reply_bytes_held_total", "cause=\"whole_box\""},
    {"settings_saves", "oled_box_saves_total", "file=\"settings\""},
    {"counter_saves", "oled_box_saves_total", "file=\"counter\""},
    {"start_time", "oled_box_start_time_seconds", ""},
};

const char* stat_help(const std::string& family)
{
    if (family == "oled_box_start_time_seconds")
        return "When the box's daemon started, Unix seconds: a change is a reset.";
    return "What the box's control server counted since it started.";
}

// Only digits are taken from a box's answer: a forged one cannot reach
// the exposition with anything else. A family without a sample is left
// out (boxes that keep no counts).
void stats_families(std::string& out, const std::vector<Shown>& boxes)
{
    for (std::size_t first = 0; first < sizeof kStatSeries / sizeof kStatSeries[0];) {
        const std::string family = kStatSeries[first].family;
        std::string samples;
        std::size_t next = first;
        for (; next < sizeof kStatSeries / sizeof kStatSeries[0] && family == kStatSeries[next].family; ++next) {
            for (const Shown& box : boxes) {
                for (const auto& item : *box.settings) {
                    if (item.first == kStatSeries[next].key && !item.second.empty() && item.second.size() <= 20 &&
                        item.second.find_first_not_of("0123456789") == std::string::npos) {
                        samples += family + labels(box.own, kStatSeries[next].label) + " " + item.second + "\n";
                    }
                }
            }
        }
        if (!samples.empty()) {
            const bool gauge = family == "oled_box_start_time_seconds";
            out += "# HELP " + family + " " + stat_help(family) + "\n# TYPE " + family +
                   (gauge ? " gauge\n" : " counter\n") + samples;
        }
        first = next;
    }
}

}  // namespace

std::string probe(bool answered, double seconds, const protocol::Settings& settings, const protocol::Settings& stats)
{
    std::string out;
    head(out, "oled_probe_success", "1 when the box answered the probe's question, else 0.");
    line(out, "oled_probe_success", "", answered);
    char duration[32];
    std::snprintf(duration, sizeof duration, "%.6f", seconds);
    head(out, "oled_probe_duration_seconds", "Seconds from the question to the answer, or the whole wait.");
    line(out, "oled_probe_duration_seconds", "", duration);
    if (answered)
        settings_families(out, {{"", &settings}});
    if (answered)
        stats_families(out, {{"", &stats}});
    return out;
}

std::string exposition(const std::vector<fleet::BoxState>& boxes)
{
    std::vector<Shown> known;
    std::vector<Shown> answering;
    for (const fleet::BoxState& box : boxes) {
        known.push_back({address_label(box), &box.settings});
        if (box.answering)
            answering.push_back(known.back());
    }
    std::string out;
    head(out, "oled_box_up", "1 when the box answered this round, 0 when it answered an earlier one only.");
    for (std::size_t i = 0; i < boxes.size(); ++i)
        line(out, "oled_box_up", labels(known[i].own), boxes[i].answering);
    head(out, "oled_box_last_answer_timestamp_seconds", "When the box last answered, in Unix seconds.");
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        line(out, "oled_box_last_answer_timestamp_seconds", labels(known[i].own),
             static_cast<long>(boxes[i].last_answer));
    }
    settings_families(out, answering);
    std::vector<Shown> counted;
    for (const fleet::BoxState& box : boxes) {
        if (box.answering && !box.counts.empty())
            counted.push_back({address_label(box), &box.counts});
    }
    stats_families(out, counted);
    return out;
}

}  // namespace metrics
