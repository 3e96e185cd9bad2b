#include <gtest/gtest.h>

#include "metrics.h"
#include "settings_view.h"

namespace {

protocol::Settings defaults()
{
    protocol::Settings settings;
    protocol::parse_reply(
        "[oled]\nOLed_a_kind_start=1\nOLed_a_small_n_start=0\nOLed_a_cpu=1\nOLed_a_vi=1\nOLed_a_ai=1\n"
        "OLed_a_net=1\nOLed_a_venc=1\nOLed_a_temp=1\nOLed_a_start=1\nOLed_a_sleep_tim=3\nOLed_a_logo=0\n"
        "OLed_a_io=0\nOLed_a_led_start=0\nkLed_onboard=0\n",
        settings);
    return settings;
}

void set(protocol::Settings& settings, const std::string& key, const std::string& value)
{
    for (auto& pair : settings) {
        if (pair.first == key)
            pair.second = value;
    }
}

// A box's byte 0xE9 is "é" (Latin-1) in get --json, the fleet API and
// /metrics alike; quotes and control bytes stay the text they were.
TEST(SettingsView, OneRuleForBytesThatAreNotUtf8)
{
    const protocol::Settings settings = {{"a", "1"}, {"OLed_a_small_n_buf", "say \"hi\" \\ \t\x01\xe9"}, {"z", ""}};
    const auto json = nlohmann::ordered_json::parse(settings_view::to_json(settings));
    EXPECT_EQ(json.dump(),
              "{\"a\":\"1\",\"OLed_a_small_n_buf\":\"say \\\"hi\\\" \\\\ \\t\\u0001\xc3\xa9\",\"z\":\"\"}");
    EXPECT_EQ(metrics::label_value("\xe9\"\n"), "\xc3\xa9\\\"\\n");
    EXPECT_EQ(settings_view::to_json(protocol::Settings{}), "{}");
}

TEST(SettingsView, SummaryNamesPanelSleepPagesAndLeds)
{
    protocol::Settings settings = defaults();
    EXPECT_EQ(settings_view::summary("192.168.1.20", settings),
              "192.168.1.20    panel=old-small sleep=3 pages=cpu,vi,ai,net,venc,temp,time leds=off");

    set(settings, "OLed_a_kind_start", "0");
    set(settings, "OLed_a_sleep_tim", "10");
    set(settings, "OLed_a_cpu", "0");
    set(settings, "OLed_a_logo", "1");
    set(settings, "OLed_a_small_n_start", "7");  // any non-zero number is on
    set(settings, "kLed_onboard", "1");
    EXPECT_EQ(settings_view::summary("10.0.0.1", settings),
              "10.0.0.1        panel=big sleep=10 pages=vi,ai,net,venc,temp,time,logo,text leds=onboard");

    // Text that is no number reads as -1 on the box: a flag that is on.
    set(settings, "OLed_a_led_start", "on");
    set(settings, "OLed_a_kind_start", "abc");
    for (const char* page : {"OLed_a_vi", "OLed_a_ai", "OLed_a_net", "OLed_a_venc", "OLed_a_temp", "OLed_a_start",
                             "OLed_a_logo", "OLed_a_small_n_start"}) {
        set(settings, page, "0x1");
    }
    EXPECT_EQ(settings_view::summary("10.0.0.1", settings),
              "10.0.0.1        panel=type-abc sleep=10 pages=none leds=outside,onboard");
    set(settings, "OLed_a_kind_start", "5");
    EXPECT_EQ(settings_view::summary("10.0.0.1", settings).substr(16, 16), "panel=small-1.29");
    EXPECT_EQ(settings_view::summary("10.0.0.2", protocol::Settings{}),
              "10.0.0.2        panel=? sleep=? pages=none leds=off");
}

TEST(SettingsView, BoxesAreSortedByAddressWithOneAnswerEach)
{
    std::vector<settings_view::Box> answers = {{"10.0.0.10", {{"n", "1"}}},
                                               {"10.0.0.9", {{"n", "2"}}},
                                               {"9.255.0.1", {{"n", "3"}}},
                                               {"10.0.0.10", {{"n", "4"}}},
                                               {"10.0.1.1", {{"n", "5"}}}};
    const std::vector<settings_view::Box> boxes = settings_view::sorted_unique(answers);
    EXPECT_EQ(settings_view::to_json(boxes),
              "[{\"address\":\"9.255.0.1\",\"settings\":{\"n\":\"3\"}},"
              "{\"address\":\"10.0.0.9\",\"settings\":{\"n\":\"2\"}},"
              "{\"address\":\"10.0.0.10\",\"settings\":{\"n\":\"4\"}},"
              "{\"address\":\"10.0.1.1\",\"settings\":{\"n\":\"5\"}}]");
}

}  // namespace
