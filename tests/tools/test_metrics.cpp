#include <gtest/gtest.h>

#include <sstream>

#include "metrics.h"

namespace {

// HELP and TYPE lines are checked by promtool end to end; the samples are checked here.
std::string samples(const std::string& exposition)
{
    std::istringstream text(exposition);
    std::string out;
    for (std::string line; std::getline(text, line);) {
        if (line[0] != '#')
            out += line + "\n";
    }
    return out;
}

TEST(Metrics, LabelValuesEscapedAndUtf8)
{
    EXPECT_EQ(metrics::label_value("a\\b\"c\nd{x=1},\t\xe9"), "a\\\\b\\\"c\\nd{x=1},\t\xc3\xa9");
}

TEST(Metrics, SilentBoxesKeepOnlyUpAndLastAnswer)
{
    fleet::BoxState talking{"10.1.0.5",
                            {{"OLed_a_kind_start", "0"},
                             {"OLed_a_small_n_buf", "say \"hi\" \\o/"},
                             {"OLed_a_cpu", "1"},
                             {"OLed_a_vi", "0"},
                             {"OLed_a_sleep_tim", "7"},
                             {"OLed_a_led_start", "2"},
                             {"OLed_a_ai", "x"}},
                            1700000000,
                            true,
                            // Its counts: only digits reach the exposition.
                            {{"datagrams_refused_wrong_mac", "2"},
                             {"datagrams_refused_not_signed", "5"},
                             {"replies_held_whole_box", "1e9"}}};
    // A silent box's counts are as stale as its settings.
    fleet::BoxState silent{
        "10.0.0.6", {{"OLed_a_sleep_tim", "3"}}, 1600000000, false, {{"datagrams_refused_not_signed", "9"}}};
    EXPECT_EQ(samples(metrics::exposition({silent, talking})),
              "oled_box_up{address=\"10.0.0.6\"} 0\n"
              "oled_box_up{address=\"10.1.0.5\"} 1\n"
              "oled_box_last_answer_timestamp_seconds{address=\"10.0.0.6\"} 1600000000\n"
              "oled_box_last_answer_timestamp_seconds{address=\"10.1.0.5\"} 1700000000\n"
              "oled_box_info{address=\"10.1.0.5\",panel=\"big\",custom_text=\"say \\\"hi\\\" \\\\o/\"} 1\n"
              "oled_box_sleep_seconds{address=\"10.1.0.5\"} 7\n"
              "oled_box_led_on{address=\"10.1.0.5\"} 1\n"
              "oled_box_page_enabled{address=\"10.1.0.5\",page=\"cpu\"} 1\n"
              "oled_box_page_enabled{address=\"10.1.0.5\",page=\"vi\"} 0\n"
              "oled_box_datagrams_refused_total{address=\"10.1.0.5\",reason=\"not_signed\"} 5\n"
              "oled_box_datagrams_refused_total{address=\"10.1.0.5\",reason=\"wrong_mac\"} 2\n");
}

TEST(Metrics, ProbeShowsTheBoxWithoutItsAddress)
{
    EXPECT_EQ(samples(metrics::probe(false, 0.5, {})), "oled_probe_success 0\noled_probe_duration_seconds 0.500000\n");
    EXPECT_EQ(samples(metrics::probe(true, 0.00125, {{"OLed_a_kind_start", "3"}, {"OLed_a_vi", "1"}})),
              "oled_probe_success 1\n"
              "oled_probe_duration_seconds 0.001250\n"
              "oled_box_info{panel=\"small-0.96-4wire\",custom_text=\"\"} 1\n"
              "oled_box_page_enabled{page=\"vi\"} 1\n");
}

}  // namespace
