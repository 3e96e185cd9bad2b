#include <string.h>

#include <string>

#include "control_fixture.h"
#include "runtime_settings.h"

TEST_F(ControlDatagram, EveryKeyReachesItsSettingAndSwitch)
{
    ASSERT_TRUE(handle("oled_type=3|led_on=1|oled_str_en=1|oled_string=HELLO|cpu=0|vi=0|ai=0|net=0|time=0|"
                       "venc=0|temp=0|io=1|sleep=7|logo=1|port=5|sda=1_1|scl=1_2|cs=1_3|dc=1_4|res=1_5|"
                       "sml_sda=2_1|sml_scl=2_2|vcc=2_3|gnd=2_4|pwr_led=3_1|cpu_led=3_2|eth_led=3_3|"
                       "hdmi_led=3_4|test=2"));
    EXPECT_EQ(settings_file(),
              defaults_with({"OLed_a_kind_start=3", "OLed_a_led_start=1", "OLed_a_small_n_start=1",
                             "OLed_a_small_n_buf=HELLO", "OLed_a_cpu=0", "OLed_a_vi=0", "OLed_a_ai=0",
                             "OLed_a_net=0", "OLed_a_start=0", "OLed_a_venc=0", "OLed_a_temp=0", "OLed_a_io=1",
                             "OLed_a_sleep_tim=7", "OLed_a_logo=1", "OLed_a_gpio_j=5", "OLed_ba_SDINMUX=1_1",
                             "OLed_ba_SCLKMUX=1_2", "OLed_ba_CS_MUX=1_3", "OLed_ba_DC_MUX=1_4",
                             "OLed_ba_RES_MUX=1_5", "OLed_sml_SDINMUX=2_1", "OLed_sml_SCLKMUX=2_2",
                             "OLed_sml_VCCMUX=2_3", "OLed_sml_GNDMUX=2_4", "kLed_pwr_gpio=3_1",
                             "kLed_cpu_gpio=3_2", "kLed_eth_gpio=3_3", "kLed_hdmi_gpio=3_4"}));
    EXPECT_EQ(oled_type, 1);  // the panel type waits for the next start
    EXPECT_TRUE(led_outside && oled_led_on && oled_string_enable && oled_display_io && oled_display_logo);
    EXPECT_FALSE(oled_display_cpu || oled_display_vi || oled_display_ai || oled_display_ethspeed ||
                 oled_display_time || oled_display_venc || oled_display_temp);
    EXPECT_EQ(oled_sleep_time, 7);
    EXPECT_EQ(led_test, 2);
    EXPECT_EQ(memcmp(oled_data, "HELLO\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 22), 0);
    // Saved, re-read and printed once, after all items.
    EXPECT_EQ(count(printed, "[SaveConfig]-246: save config succeed\n"), 1);
    EXPECT_EQ(count(printed, "[ReadConfig]-221: read_config: /data/oled.ini\n"), 1);
    EXPECT_NE(printed.find(settings_file()), std::string::npos);
    EXPECT_LT(printed.find("save config succeed"), printed.find("read_config"));
}

TEST_F(ControlDatagram, NumbersAreParsedAsTheStoreParsesThem)
{
    handle("sleep=0|cpu=abc|vi=|logo=-2|test=17x");
    EXPECT_EQ(oled_sleep_time, 0);
    EXPECT_TRUE(oled_display_cpu);  // not a number: -1, which is not zero
    EXPECT_TRUE(oled_display_vi);
    EXPECT_TRUE(oled_display_logo);
    EXPECT_EQ(led_test, 17);
    EXPECT_EQ(settings_file(),
              defaults_with({"OLed_a_sleep_tim=0", "OLed_a_cpu=-1", "OLed_a_vi=-1", "OLed_a_logo=-2"}));
}

TEST_F(ControlDatagram, UnknownKeyIsReportedOnceAndTheRestApplies)
{
    oled_display_cpu = false;
    ASSERT_TRUE(handle("cpu=1|bogus=3|vi=0"));
    EXPECT_EQ(count(printed, "you send error command\n"), 1);
    EXPECT_TRUE(oled_display_cpu);
    EXPECT_FALSE(oled_display_vi);
    EXPECT_EQ(count(printed, "save config succeed"), 1);
    // Keys are exact and case-sensitive.
    handle("CPU=0|cpu =0|=0");
    EXPECT_EQ(count(printed, "you send error command\n"), 3);
    EXPECT_TRUE(oled_display_cpu);
}

TEST_F(ControlDatagram, ItemsWithoutAValueAreIgnored)
{
    ASSERT_TRUE(handle("cpu|bogus||oled_string|vi=0|test"));
    EXPECT_EQ(printed.find("you send error command"), std::string::npos);
    EXPECT_TRUE(oled_display_cpu);
    EXPECT_STREQ(oled_data, "WELCOME\n");
    EXPECT_FALSE(oled_display_vi);
    EXPECT_EQ(led_test, 0);
    EXPECT_EQ(settings_file(), defaults_with({"OLed_a_vi=0"}));
    EXPECT_TRUE(replies.sent.empty());
}

TEST_F(ControlDatagram, LedSwitchFollowsOnboardOrOutside)
{
    led_onboard = true;
    handle("led_on=0");
    EXPECT_FALSE(led_outside);
    EXPECT_TRUE(oled_led_on);
    led_onboard = false;
    handle("led_on=0");
    EXPECT_FALSE(oled_led_on);
    handle("cpu=1");  // recomputed after every datagram
    EXPECT_FALSE(oled_led_on);
    handle("led_on=4");
    EXPECT_TRUE(oled_led_on);
}

TEST_F(ControlDatagram, CustomTextIsCutAndStaysTerminated)
{
    memset(oled_data, 'X', sizeof(oled_data) - 1);
    handle("oled_string=ABCDEFGHIJKLMNOPQRSTUVWXYZ");
    EXPECT_STREQ(oled_data, "ABCDEFGHIJKLMNOPQRSTU");  // 21 bytes, then a terminator
    EXPECT_EQ(settings_file(), defaults_with({"OLed_a_small_n_buf=ABCDEFGHIJKLMNOPQRSTUVWXYZ"}));

    handle("oled_string=HI");
    EXPECT_EQ(memcmp(oled_data, "HI\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 22), 0);

    // A line break ends a stored text: the file keeps one line per key.
    handle("oled_string=TWO\nLINES|sda=4_4\r\n");
    EXPECT_STREQ(oled_data, "TWO");
    EXPECT_EQ(settings_file(), defaults_with({"OLed_a_small_n_buf=TWO", "OLed_ba_SDINMUX=4_4"}));
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

    // Plain substring tests: a shorter address inside the text matches,
    // the marker may stand anywhere, and an unknown own address matches all.
    EXPECT_TRUE(handle("controlled=192.168.1.20|vi=0", "192.168.1.2"));
    EXPECT_FALSE(oled_display_vi);
    EXPECT_FALSE(handle("ai=0|xcontrolledx", "10.1.1.1"));
    EXPECT_TRUE(oled_display_ai);
    EXPECT_TRUE(handle("controlled=10.9.9.9|ai=0", ""));
    EXPECT_FALSE(oled_display_ai);
    EXPECT_TRUE(handle("temp=0", "10.1.1.1"));  // no marker: every box obeys
    EXPECT_FALSE(oled_display_temp);
}

TEST_F(ControlDatagram, TextEndsAtTheSizeLimitOrAZeroByte)
{
    EXPECT_FALSE(handle("c"));
    EXPECT_FALSE(handle(""));
    EXPECT_EQ(printed, "");

    // The limit cuts through the sleep item: "sleep=12" is what remains,
    // and the item after the cut never arrives.
    std::string text = "cpu=0|" + std::string(1024 - 6 - 9, 'x') + "|sleep=12345|vi=0";
    ASSERT_EQ(text.substr(1016, 8), "sleep=12");
    text += std::string(2000 - text.size(), 'y');
    ASSERT_TRUE(handle(text));
    EXPECT_FALSE(oled_display_cpu);
    EXPECT_EQ(oled_sleep_time, 12);
    EXPECT_TRUE(oled_display_vi);
    EXPECT_EQ(count(printed, "you send error command"), 0);  // the run of x has no "="

    const char with_zero[] = "ai=0\0vi=0";
    ASSERT_TRUE(handle_bytes(with_zero, sizeof(with_zero) - 1));
    EXPECT_FALSE(oled_display_ai);
    EXPECT_TRUE(oled_display_vi);
}
