#include <gtest/gtest.h>

#include "metrics.h"

namespace {

TEST(Metrics, LabelValuesEscapedAndUtf8) {
    EXPECT_EQ(metrics::label_value("a\\b\"c\nd{x=1},\t\xe9"), "a\\\\b\\\"c\\nd{x=1},\t\xc3\xa9");
}

TEST(Metrics, SilentBoxesKeepOnlyUpAndLastAnswer) {
    fleet::BoxState talking{"10.1.0.5",
                            {{"OLed_a_kind_start", "0"}, {"OLed_a_small_n_buf", "say \"hi\" \\o/"},
                             {"OLed_a_cpu", "1"}, {"OLed_a_vi", "0"}, {"OLed_a_sleep_tim", "7"},
                             {"OLed_a_led_start", "2"}, {"OLed_a_ai", "x"}},
                            1700000000, true};
    fleet::BoxState silent{"10.0.0.6", {{"OLed_a_sleep_tim", "3"}}, 1600000000, false};
    EXPECT_EQ(metrics::exposition({silent, talking}),
              "# HELP oled_box_up 1 when the box answered this round, 0 when it answered an earlier one only.\n"
              "# TYPE oled_box_up gauge\n"
              "oled_box_up{address=\"10.0.0.6\"} 0\n"
              "oled_box_up{address=\"10.1.0.5\"} 1\n"
              "# HELP oled_box_last_answer_timestamp_seconds When the box last answered, in Unix seconds.\n"
              "# TYPE oled_box_last_answer_timestamp_seconds gauge\n"
              "oled_box_last_answer_timestamp_seconds{address=\"10.0.0.6\"} 1600000000\n"
              "oled_box_last_answer_timestamp_seconds{address=\"10.1.0.5\"} 1700000000\n"
              "# HELP oled_box_info The box's panel type and custom text line.\n"
              "# TYPE oled_box_info gauge\n"
              "oled_box_info{address=\"10.1.0.5\",panel=\"big\",custom_text=\"say \\\"hi\\\" \\\\o/\"} 1\n"
              "# HELP oled_box_sleep_seconds Seconds the panel holds each page.\n"
              "# TYPE oled_box_sleep_seconds gauge\n"
              "oled_box_sleep_seconds{address=\"10.1.0.5\"} 7\n"
              "# HELP oled_box_led_on The outside status LEDs' switch: 1 on, 0 off.\n"
              "# TYPE oled_box_led_on gauge\n"
              "oled_box_led_on{address=\"10.1.0.5\"} 1\n"
              "# HELP oled_box_page_enabled 1 when the panel shows the page, else 0.\n"
              "# TYPE oled_box_page_enabled gauge\n"
              "oled_box_page_enabled{address=\"10.1.0.5\",page=\"cpu\"} 1\n"
              "oled_box_page_enabled{address=\"10.1.0.5\",page=\"vi\"} 0\n");
}

}  // namespace
