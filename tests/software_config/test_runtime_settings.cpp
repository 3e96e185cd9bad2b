#include <gtest/gtest.h>

#include <string.h>

#include "capture_stdout.h"
#include "runtime_settings.h"
#include "singleton.h"
#include "software_config.h"
#include "temp_root.h"

namespace {
typedef SoftwareConfig C;
}

// The store is a process-wide singleton, so one test walks through the
// settings that matter, changing them between runs of init_argumnt.
TEST(InitArgumnt, DerivesEveryRuntimeSwitchFromTheStore)
{
    TempRoot root;
    CaptureStdout quiet;
    std::shared_ptr<SoftwareConfig> config = Singleton<SoftwareConfig>::instance();

    init_argumnt();
    EXPECT_EQ(oled_type, 1);
    EXPECT_TRUE(oled_display_cpu && oled_display_vi && oled_display_ai && oled_display_ethspeed && oled_display_venc &&
                oled_display_temp && oled_display_time);
    EXPECT_FALSE(oled_display_logo || oled_display_io || oled_string_enable);
    EXPECT_EQ(oled_sleep_time, 3);
    EXPECT_STREQ(oled_data, "WELCOME\n");
    EXPECT_FALSE(oled_led_on);
    EXPECT_GT(g_sock, 2);
    EXPECT_STREQ(loip, "127.0.0.1");

    config->SetConfig(C::OLed_a_kind_start, std::string("abc"));
    config->SetConfig(C::OLed_a_led_start, 0);
    config->SetConfig(C::kLed_onboard, 1);
    config->SetConfig(C::OLed_a_small_n_buf, std::string("ABCDEFGHIJKLMNOPQRSTUVWXY"));
    config->SetConfig(C::OLed_a_small_n_start, std::string("7"));
    config->SetConfig(C::OLed_a_cpu, std::string("0"));
    config->SetConfig(C::OLed_a_net, std::string("x"));  // -1: non-zero, so on
    config->SetConfig(C::OLed_a_io, std::string("2"));
    config->SetConfig(C::OLed_a_sleep_tim, std::string("-4"));
    init_argumnt();
    EXPECT_EQ(oled_type, -1);
    EXPECT_TRUE(led_onboard);
    EXPECT_FALSE(led_outside);
    EXPECT_TRUE(oled_led_on);
    EXPECT_EQ(memcmp(oled_data, "ABCDEFGHIJKLMNOPQRST", 21), 0);  // 20 characters, no newline
    EXPECT_TRUE(oled_string_enable);
    EXPECT_FALSE(oled_display_cpu);
    EXPECT_TRUE(oled_display_ethspeed);
    EXPECT_TRUE(oled_display_io);
    EXPECT_EQ(oled_sleep_time, -4);

    config->SetConfig(C::OLed_a_small_n_buf, std::string("ABCDEFGHIJKLMNOPQRS"));
    init_argumnt();
    EXPECT_STREQ(oled_data, "ABCDEFGHIJKLMNOPQRS\n");  // 19 characters keep the newline
}
