#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <string.h>

#include <string>
#include <vector>

#include "capture_stdout.h"
#include "control_datagram.h"
#include "control_stats.h"
#include "runtime_settings.h"
#include "settings_saver.h"
#include "singleton.h"
#include "software_config.h"
#include "temp_root.h"

namespace {

// Replies collected as "ip:port" and payload instead of sent.
class CollectReplies : public ReplySender {
public:
    void send(const char* ip, unsigned int port, const std::string& payload, bool) override
    {
        to.push_back(std::string(ip) + ":" + std::to_string(port));
        payloads.push_back(payload);
    }
    std::vector<std::string> to;
    std::vector<std::string> payloads;
};

// A box with the default settings saved and the switches as start-up
// leaves them; datagrams come from 192.168.1.1:40000.
class ControlDatagram : public ::testing::Test {
protected:
    void SetUp() override { start(""); }

    void start(const char* board)
    {
        CaptureStdout quiet;
        snprintf(hw_info, sizeof(hw_info), "%s", board);
        Singleton<SoftwareConfig>::init();  // the defaults, as at a first start
        Singleton<SoftwareConfig>::instance()->SaveConfig();
        pins = pins_at_start();
        oled_type = 1;
        snprintf(oled_data, sizeof(oled_data), "WELCOME\n");
        oled_display_cpu = oled_display_vi = oled_display_ai = oled_display_ethspeed = oled_display_venc =
            oled_display_temp = oled_display_time = true;
        oled_display_logo = oled_display_io = oled_string_enable = false;
        led_outside = led_onboard = oled_led_on = false;
        oled_sleep_time = 3;
        led_test = 0;
    }

    // Each datagram a quiet second after the last, unless the test says when.
    bool handle(const std::string& text, const std::string& local = "192.168.1.20", int64_t at_ms = -1)
    {
        CaptureStdout out;
        now_ms = at_ms >= 0 ? at_ms : now_ms + 2000;
        ControlContext context = {local, pins, &replies, &saver, nullptr, {inet_addr("10.0.0.7")}, &stats, 1700000000};
        const bool obeyed = handle_control_datagram(text.data(), static_cast<long>(text.size()),
                                                    ControlPeer{"192.168.1.1", 40000}, local, context, now_ms);
        printed = out.text();
        return obeyed;
    }

    // The saved defaults with some key=value lines replaced.
    static std::string defaults_with(const std::vector<std::string>& lines)
    {
        std::string text;
        const std::vector<std::string> defaults = SoftwareConfig::DefaultValues("");
        for (int id = 0; id < SoftwareConfig::kConfigCount; ++id) {
            const std::string key = std::string(SoftwareConfig::KeyName(id)) + "=";
            std::string line = key + defaults[id];
            for (const std::string& replaced : lines) {
                line = replaced.compare(0, key.size(), key) == 0 ? replaced : line;
            }
            text += line + "\n";
        }
        return text;
    }

    int count(const std::string& what) const { return occurrences(printed, what); }

    std::string settings_file() const { return root.read("/data/oled.ini"); }

    TempRoot root;
    PinsAtStart pins;
    ControlStats stats;
    CollectReplies replies;
    SettingsSaver saver;
    int64_t now_ms = 0;
    std::string printed;
};

}  // namespace

TEST_F(ControlDatagram, EveryKeyReachesItsSettingAndSwitch)
{
    ASSERT_TRUE(
        handle("oled_type=3|led_on=1|oled_str_en=1|oled_string=HELLO|cpu=0|vi=0|ai=0|net=0|time=0|"
               "venc=0|temp=0|io=1|test=2|sleep=3600|logo=1|port=65535|sda=0|scl=0|cs=0|dc=0|res=0|"
               "sml_sda=0|sml_scl=0|vcc=0|gnd=0|pwr_led=0|cpu_led=0|eth_led=0|hdmi_led=0"));
    EXPECT_EQ(settings_file(), defaults_with({"OLed_a_kind_start=3",
                                              "OLed_a_led_start=1",
                                              "OLed_a_small_n_start=1",
                                              "OLed_a_small_n_buf=HELLO",
                                              "OLed_a_cpu=0",
                                              "OLed_a_vi=0",
                                              "OLed_a_ai=0",
                                              "OLed_a_net=0",
                                              "OLed_a_start=0",
                                              "OLed_a_venc=0",
                                              "OLed_a_temp=0",
                                              "OLed_a_io=1",
                                              "OLed_a_sleep_tim=3600",
                                              "OLed_a_logo=1",
                                              "OLed_a_gpio_j=65535",
                                              "OLed_ba_SDINMUX=0",
                                              "OLed_ba_SCLKMUX=0",
                                              "OLed_ba_CS_MUX=0",
                                              "OLed_ba_DC_MUX=0",
                                              "OLed_ba_RES_MUX=0",
                                              "OLed_sml_SDINMUX=0",
                                              "OLed_sml_SCLKMUX=0"}));
    EXPECT_EQ(oled_type, 1);  // the panel type waits for the next start
    EXPECT_TRUE(led_outside && oled_led_on && oled_string_enable && oled_display_io && oled_display_logo);
    EXPECT_FALSE(oled_display_cpu || oled_display_vi || oled_display_ai || oled_display_ethspeed || oled_display_time ||
                 oled_display_venc || oled_display_temp);
    EXPECT_EQ(oled_sleep_time, 3600);
    EXPECT_EQ(led_test, 2);
    EXPECT_EQ(memcmp(oled_data, "HELLO\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 22), 0);
    // Saved, re-read and printed once, after all items.
    EXPECT_EQ(count("[SaveConfig]-246: save config succeed\n[ReadConfig]-221: read_config: /data/oled.ini\n" +
                    settings_file()),
              1);
}

TEST_F(ControlDatagram, UnknownKeysAreReportedAndItemsWithoutValueIgnored)
{
    oled_display_cpu = false;
    ASSERT_TRUE(handle("cpu=1|bogus=3|vi=0"));
    EXPECT_EQ(count("you send error command\n"), 1);
    EXPECT_TRUE(oled_display_cpu);
    EXPECT_FALSE(oled_display_vi);
    // An empty value is no value: "cpu=" is "cpu", for every key.
    handle("CPU=0|cpu =0|=0|cpu|bogus||oled_string|test|cpu=|sleep=|oled_string=|test=|temp==0|bogus=");
    EXPECT_EQ(count("you send error command\n"), 3);
    EXPECT_TRUE(oled_display_cpu && oled_display_temp);
    EXPECT_EQ(oled_sleep_time, 3);
    EXPECT_STREQ(oled_data, "WELCOME\n");
    EXPECT_EQ(led_test, 0);
    EXPECT_EQ(settings_file(), defaults_with({"OLed_a_vi=0"}));
}

TEST_F(ControlDatagram, LedSwitchFollowsOnboardOrOutside)
{
    led_onboard = true;
    handle("led_on=0");
    EXPECT_FALSE(led_outside);
    EXPECT_TRUE(oled_led_on);
}

TEST_F(ControlDatagram, RefusalsAreShownSafelyAndALineBreakEndsAText)
{
    ASSERT_TRUE(handle("ai=\x1b[2J|oled_string=TWO\nLINES|sda=0\r\n"));
    EXPECT_EQ(printed.find("item refused, ai: '\\x1b[2J' is not a decimal integer\n"), 0u);
    EXPECT_STREQ(oled_data, "TWO");
    // The file keeps one line per key.
    EXPECT_EQ(settings_file(), defaults_with({"OLed_a_small_n_buf=TWO", "OLed_ba_SDINMUX=0"}));
}

TEST_F(ControlDatagram, APinKeyTakesNoneItsPinAtStartOrItsDefault)
{
    // The small panel's supply and ground on this board are 4_2 and 4_3.
    start("BRD25");
    root.write("/data/oled.ini", "[oled]\nOLed_sml_SDINMUX=5_1\n");
    Singleton<SoftwareConfig>::instance()->ReadConfig();
    pins = pins_at_start();
    handle("vcc=4_3|gnd=4_2|pwr_led=4_2|sml_sda=0|sml_scl=0");
    EXPECT_EQ(count("item refused, "), 3);
    EXPECT_EQ(count("item refused, vcc: 4_3 "), 1);
    const std::string emptied = settings_file();
    EXPECT_NE(emptied.find("OLed_sml_SDINMUX=0\n"), std::string::npos);
    EXPECT_NE(emptied.find("OLed_sml_VCCMUX=4_2\n"), std::string::npos);
    handle("sml_sda=5_1|sml_scl=4_1|vcc=4_1");
    EXPECT_EQ(count("item refused, "), 1);
    EXPECT_NE(settings_file().find("OLed_sml_SDINMUX=5_1\nOLed_sml_SCLKMUX=4_1\n"), std::string::npos);
}

TEST_F(ControlDatagram, ChangesWithinASecondOfAWriteAreSavedTogetherAtItsEnd)
{
    handle("cpu=0", "", 10000);  // the first change after a quiet second: at once
    EXPECT_EQ(settings_file(), defaults_with({"OLed_a_cpu=0"}));
    handle("cpu=1|vi=0", "", 10300);
    handle("replyoled", "", 10600);
    EXPECT_EQ(printed, "");
    EXPECT_FALSE(oled_display_vi);  // applied at once all the same
    // The reply shows the settings as they will be saved.
    EXPECT_EQ(replies.payloads.back(), "[oled]\n" + defaults_with({"OLed_a_vi=0"}));
    EXPECT_EQ(saver.due_ms(), 11000);
    saver.save_if_due(10999);
    EXPECT_EQ(settings_file(), defaults_with({"OLed_a_cpu=0"}));
    CaptureStdout out;
    saver.save_if_due(11000);
    EXPECT_EQ(out.text(), "[SaveConfig]-246: save config succeed\n[ReadConfig]-221: read_config: /data/oled.ini\n" +
                              defaults_with({"OLed_a_vi=0"}));
    EXPECT_EQ(saver.due_ms(), -1);
    // The signal path saves what waits, whatever the time.
    handle("ai=0", "", 11500);
    CaptureStdout quiet;
    saver.save_pending();
    EXPECT_EQ(settings_file(), defaults_with({"OLed_a_vi=0", "OLed_a_ai=0"}));
}

TEST_F(ControlDatagram, OnlyTheAddressedBoxObeysAControlledDatagram)
{
    const std::string before = settings_file();
    EXPECT_FALSE(handle("controlled=192.168.1.21|cpu=0"));
    EXPECT_EQ(printed, "");
    EXPECT_TRUE(oled_display_cpu);
    EXPECT_EQ(settings_file(), before);
    EXPECT_TRUE(handle("controlled=192.168.1.20|cpu=0"));
    EXPECT_EQ(printed.find("controlled ip 192.168.1.20\n"), 0u);
    EXPECT_FALSE(oled_display_cpu);
    // Substring tests: a shorter own address matches, the marker counts
    // anywhere, an unknown own address matches all, no marker obeys all.
    EXPECT_TRUE(handle("controlled=192.168.1.20|vi=0", "192.168.1.2"));
    EXPECT_FALSE(handle("ai=0|xcontrolledx", "10.1.1.1"));
    // A box that does not know its own address obeys no aimed datagram.
    EXPECT_FALSE(handle("controlled=|ai=0", ""));
    EXPECT_TRUE(handle("temp=0", "10.1.1.1"));
    EXPECT_TRUE(oled_display_ai);
    EXPECT_FALSE(oled_display_vi || oled_display_temp);
}

TEST_F(ControlDatagram, ReplyReflectsFileBeforeTheChange)
{
    const std::string hand_made = "[oled]\r\nOLed_a_cpu=1\n# kept as written\nOLed_a_vi=1";
    root.write("/data/oled.ini", hand_made);
    ASSERT_TRUE(handle("cpu=0|replyoled|vi=0|replyoled"));
    EXPECT_EQ(replies.payloads, std::vector<std::string>(1, "[oled]\n" + hand_made));
    EXPECT_EQ(settings_file(), defaults_with({"OLed_a_cpu=0", "OLed_a_vi=0"}));

    // Without a file the header goes alone.
    remove(root.host("/data/oled.ini").c_str());
    handle("replyoled");
    EXPECT_EQ(replies.payloads.back(), "[oled]\n");
}

TEST_F(ControlDatagram, OneReplyPerDatagramToTheSenderOrTheNamedDestination)
{
    // The first reply item decides; a bad one leaves the datagram silent.
    const std::vector<std::pair<std::string, std::vector<std::string>>> cases = {
        {"replyoled", {"192.168.1.1:40000"}},
        {"replyoled=10.0.0.6", {"10.0.0.6:40000"}},
        {"replyoled=10.0.0.5:9000|replyoled=10.0.0.6|replyoled", {"10.0.0.5:9000"}},
        {"cpu=1|replyoled|replyoled=10.0.0.6:7", {"192.168.1.1:40000"}},
        {"replyoled=1255.255.255.255:9|replyoled", {}},
        // Never to the box's own services or to every host.
        {"replyoled=10.0.0.7:16124|replyoled", {}},
        {"replyoled=127.1:9", {}},
        {"replyoled=224.168.1.1:9", {}},
        {"replyoled=255.255.255.255:9", {}},
        {"replyoled=0.0.0.0:9", {}},
    };
    for (const auto& c : cases) {
        replies.to.clear();
        ASSERT_TRUE(handle(c.first));
        EXPECT_EQ(replies.to, c.second) << c.first;
        EXPECT_EQ(count("replyoled: "), c.second.empty()) << c.first;
    }
}

TEST_F(ControlDatagram, CountsWhatDatagramsDidAndTellsTheSenderAlone)
{
    handle("cpu=0|bogus=1|sleep=0|replyoled=127.0.0.1:9");
    handle("controlled=10.9.9.9|cpu=1");
    replies.to.clear();
    handle("replystats=10.0.0.5:9|replyoled");
    ASSERT_EQ(replies.to, std::vector<std::string>{"192.168.1.1:40000"});
    const std::string& text = replies.payloads.back();
    EXPECT_EQ(text.find("[oledstats]\nversion="), 0u) << text;
    for (const char* line : {"\nstart_time=1700000000\ndatagrams_received=3\nchanges_applied=1\n"
                             "items_refused_bad_value=1\nitems_refused_unknown_key=1\n"
                             "items_refused_aimed_elsewhere=1\n",
                             "\nreplies_held_refused_destination=1\n", "\nsettings_saves=1\n"}) {
        EXPECT_NE(text.find(line), std::string::npos) << line << " in\n" << text;
    }
}

TEST_F(ControlDatagram, TextEndsAtTheSizeLimitOrAZeroByte)
{
    EXPECT_FALSE(handle("c"));
    EXPECT_EQ(printed, "");
    // The limit cuts through the sleep item after "sleep=12"; what follows
    // the cut never arrives.
    std::string text = "cpu=0|" + std::string(1009, 'x') + "|sleep=12345|vi=0";
    ASSERT_EQ(text.substr(1016, 8), "sleep=12");
    ASSERT_TRUE(handle(text + std::string(2000 - text.size(), 'y')));
    EXPECT_FALSE(oled_display_cpu);
    EXPECT_EQ(oled_sleep_time, 12);
    EXPECT_TRUE(oled_display_vi);
    ASSERT_TRUE(handle(std::string("ai=0\0vi=0", 9)));
    EXPECT_FALSE(oled_display_ai);
    EXPECT_TRUE(oled_display_vi);
}
