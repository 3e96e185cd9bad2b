// The three loops run on the test's own thread over the simulated SoC and
// a copy of the "good" fixture box. sleep, usleep and the uptime belong to
// the test: a pause costs nothing, each screen held for oled_sleep_time is
// taken as a picture, and the test ends a loop by clearing its flag.
#include <gtest/gtest.h>
#include <stdio.h>
#include <string.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "capture_stdout.h"
#include "interface_tables.h"
#include "led_loop.h"
#include "panel_fixture.h"
#include "probe_scene.h"
#include "runtime_settings.h"
#include "screen_loops.h"
#include "soc.h"

namespace {

std::function<void(unsigned int)> g_on_sleep;
std::function<void(useconds_t)> g_on_usleep;

}  // namespace

extern "C" unsigned int sleep(unsigned int seconds)
{
    if (g_on_sleep) {
        g_on_sleep(seconds);
    }
    return 0;
}

extern "C" int usleep(useconds_t microseconds)
{
    if (g_on_usleep) {
        g_on_usleep(microseconds);
    }
    return 0;
}

extern "C" int sysinfo(struct sysinfo* info) __THROW
{
    memset(info, 0, sizeof(*info));
    info->uptime = 93784;  // one day, 2 h, 3 min, 4 s
    return 0;
}

namespace {

const int kHold = 3;  // oled_sleep_time; the loops' own start-up waits are 5 and 8 s

class Loops : public PanelOnSoc {
protected:
    void SetUp() override
    {
        PanelOnSoc::SetUp();
        oled_string_enable = oled_display_cpu = oled_display_vi = oled_display_ai = oled_display_venc = false;
        oled_display_ethspeed = oled_display_temp = oled_display_time = oled_display_io = oled_display_logo = false;
        snprintf(oled_data, sizeof(oled_data), "CUSTOM");
        snprintf(hw_info, sizeof(hw_info), "BRD25");
        oled_sleep_time = kHold;
        g_sock = -1;  // the address stays the one set here
        snprintf(g_ip[0], sizeof(g_ip[0]), "192.168.1.20");
    }
    void TearDown() override
    {
        g_on_sleep = nullptr;
        g_on_usleep = nullptr;
        PanelOnSoc::TearDown();
    }

    // Runs a loop until it has held `screens` screens and ended its pass;
    // keeps the screens, one under the other; returns what it printed. No
    // pixel lit on one screen and on the next may go dark in between: the
    // panel would be seen to wipe.
    std::string run(void* (*loop)(void*), RelaxedAtomic<bool>* flag, int screens)
    {
        held_.clear();
        int count = 0;
        waits_.clear();
        std::vector<uint8_t> lit_at_hold, went_dark;
        int blinks = 0;
        recorder_->hook = [this, &lit_at_hold, &went_dark](const Recorder&) {
            const std::vector<uint8_t> now = lit_at_hold.empty() ? lit_at_hold : panel_->pixels();
            for (size_t i = 0; i < now.size(); ++i) {
                went_dark[i] |= lit_at_hold[i] != 0 && now[i] == 0;
            }
        };
        g_on_sleep = [this, flag, screens, &count, &lit_at_hold, &went_dark, &blinks](unsigned int seconds) {
            if (count == 0) {
                waits_.push_back(seconds);
            }
            if (seconds == kHold) {
                const std::vector<uint8_t> now = panel_->pixels();
                for (size_t i = 0; i < lit_at_hold.size(); ++i) {
                    blinks += went_dark[i] && now[i] != 0;
                }
                lit_at_hold = now;
                went_dark.assign(now.size(), 0);
                held_.insert(held_.end(), now.begin(), now.end());
                *flag = ++count < screens;
            }
        };
        *flag = true;
        std::string printed;
        {
            CaptureStdout out;
            loop(nullptr);
            printed = out.text();
        }
        recorder_->hook = nullptr;
        EXPECT_EQ(0, blinks) << "pixels that went dark between two screens and came back";
        return printed;
    }

    void expect_held(const std::string& name) const
    {
        expect_picture(name, panel_->width(), static_cast<int>(held_.size()) / panel_->width(),
                       panel_->width() == 256 ? 15 : 1, held_);
    }

    ProbeScene box_{"good"};
    std::vector<uint8_t> held_;
    std::vector<unsigned int> waits_;  // the sleeps up to the first screen held
};

TEST_F(Loops, OldPanelShowsOneLinePerScreenCustomTextFirstAndSecondInputs)
{
    wire(1);
    snprintf(hw_info, sizeof(hw_info), "BRD20");
    oled_string_enable = oled_display_cpu = oled_display_vi = oled_display_time = true;
    std::string out = run(oled_small_loop, &thread_small_loop, 5);
    expect_held("loop_old_panel");
    // The end: blanked and switched off.
    EXPECT_EQ("oled_small_loop end\n", out.substr(out.size() - 20));
    EXPECT_FALSE(panel_->display_on());
    EXPECT_EQ(std::vector<uint8_t>(128 * 64, 0), panel_->pixels());
    // Without a second input: the custom text, the video input, the custom text.
    snprintf(hw_info, sizeof(hw_info), "BRD25");
    oled_display_cpu = oled_display_time = false;
    run(oled_small_loop, &thread_small_loop, 3);
    expect_held("loop_old_panel_one_input");
}

TEST_F(Loops, OldPanelIsSetUpAgainEveryEleventhPass)
{
    wire(1);
    oled_string_enable = true;
    const std::string out = run(oled_small_loop, &thread_small_loop, 23);
    const std::string again = "old small oled\n192.168.1.20\n";
    EXPECT_EQ("oled_small_loop\nold small oled\n" + again + again + again + "oled_small_loop end\n", out);
    // The old panel takes its second initialisation only 5 s after the first.
    EXPECT_EQ(waits_, (std::vector<unsigned int>{5, 5, kHold}));
}

TEST_F(Loops, NewPanelsShowTwoLinesPerScreenCustomTextLast)
{
    snprintf(hw_info, sizeof(hw_info), "BRD20");
    oled_string_enable = oled_display_cpu = oled_display_vi = oled_display_ai = oled_display_venc = true;
    oled_display_ethspeed = oled_display_temp = oled_display_time = oled_display_io = true;
    for (int kind : {3, 4, 5}) {  // each bus and controller
        wire(kind);
        run(oled_small_loop, &thread_small_loop, 6);
        expect_held("loop_two_lines");
    }
    // Without a second input the video line is one; a first slot left
    // alone is held all the same.
    wire(6);
    snprintf(hw_info, sizeof(hw_info), "BRD25");
    oled_string_enable = oled_display_ai = oled_display_venc = oled_display_ethspeed = false;
    oled_display_time = oled_display_io = false;
    run(oled_small_loop, &thread_small_loop, 2);
    expect_held("loop_two_lines_one_input");
}

TEST_F(Loops, BigPanelIsSwitchedOnAndShowsTheStatusLinesInOrder)
{
    wire(0);
    oled_string_enable = oled_display_cpu = oled_display_vi = oled_display_ai = oled_display_venc = true;
    oled_display_ethspeed = oled_display_temp = oled_display_time = true;
    const std::string out = run(oled_big_loop, &thread_big_loop, 8);
    expect_held("loop_big_panel");
    EXPECT_TRUE(panel_->display_on());
    EXPECT_EQ("oled_big_loop end\n", out.substr(out.size() - 18));
}

TEST_F(Loops, BigPanelPassWithNothingToShowPauses)
{
    wire(0);
    oled_sleep_time = 0;
    std::vector<useconds_t> pauses;
    g_on_usleep = [&pauses](useconds_t microseconds) {
        pauses.push_back(microseconds);
        thread_big_loop = pauses.size() < 3;
    };
    // A loop that never pauses is stopped after a while.
    std::atomic<bool> done(false);
    std::thread watchdog([&done] {
        for (int i = 0; i < 2000 && !done; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        thread_big_loop = false;
    });
    run(oled_big_loop, &thread_big_loop, 0);
    done = true;
    watchdog.join();
    ASSERT_EQ(3u, pauses.size());
    EXPECT_GE(pauses[2], 100000u);
}

// The control server flips the custom text while the loop draws it:
// every screen shows one of the two texts, whole.
TEST_F(Loops, CustomTextChangedWhileDrawnIsShownOldOrNewNeverMixed)
{
    const auto flip = [](int i) { publish_custom_text(i % 2 != 0 ? "2" : "11111111111111111111"); };
    wire(4);
    oled_string_enable = true;
    std::vector<uint8_t> screens[2];
    for (int i = 0; i < 2; ++i) {
        flip(i);
        run(oled_small_loop, &thread_small_loop, 1);
        screens[i] = held_;
    }
    std::atomic<bool> drawing(true);
    std::thread loop([this, &drawing] {
        run(oled_small_loop, &thread_small_loop, 50);
        drawing = false;
    });
    for (int flips = 0; drawing; flip(++flips)) {
    }
    loop.join();
    int mixed = 0;
    for (auto at = held_.begin(); at != held_.end(); at += screens[0].size()) {
        const std::vector<uint8_t> screen(at, at + screens[0].size());
        mixed += screen != screens[0] && screen != screens[1];
    }
    EXPECT_EQ(0, mixed);
}

// The outside LEDs on 5_0 (Ethernet), 5_1 (CPU), 5_2 (video), 5_3 (power),
// lit by a high level; the onboard ones on 6_0, 6_1, 6_2, lit by a low one.
class LedLoop : public Loops {
protected:
    void SetUp() override
    {
        Loops::SetUp();
        led_outside = led_onboard = oled_led_on = true;
        led_test = 0;
        input_mode = 1;  // the mode switch low: video inputs
    }

    // Levels of the seven LEDs ("0011" "010") after each of n passes, and
    // last after the loop's exit.
    std::vector<std::string> passes(int n)
    {
        std::vector<std::string> seen;
        const auto levels = [] {
            std::string out;
            for (int pin = 0; pin < 7; ++pin) {
                out += static_cast<char>('0' + SimSoc::instance().level(5 + pin / 4, pin % 4));
            }
            return out;
        };
        g_on_usleep = [&seen, &levels, n](useconds_t) {
            seen.push_back(levels());
            thread_led_loop = static_cast<int>(seen.size()) < n;
        };
        thread_led_loop = true;
        CaptureStdout out;
        LedSettings settings = {{"5_0", "5_1", "5_2", "5_3", "6_0", "6_1", "6_2"}, 1, 0};
        oled_led_loop(&settings);
        printed_ = out.text();
        seen.push_back(levels());
        return seen;
    }

    // The video LED after a pass with these input pages on this board.
    char video_led(const char* board, const char* vi0, const char* vi1)
    {
        snprintf(hw_info, sizeof(hw_info), "%s", board);
        box_.write("/tmp/vi0", vi0);
        box_.write("/tmp/vi1", vi1);
        return passes(1)[0][2];
    }

    void load_and_temperature(const char* load, const char* degrees)
    {
        box_.write_tool("/bin/iostat", std::string("#!/bin/sh\nprintf 'avg-cpu:  %%user\\n  ") + load + "  0.00\\n'\n");
        box_.write_tool("/home/public/get_temperature", std::string("#!/bin/sh\necho ") + degrees + "\n");
    }

    std::string printed_;
};

TEST_F(LedLoop, EthernetBlinksWithACableAndTheExitSwitchesAllButPowerOff)
{
    // The phase itself goes to both Ethernet LEDs, whatever their set's level.
    EXPECT_EQ((std::vector<std::string>{"1011110", "0011010", "1011110", "0011010", "0001111"}), passes(4));
    box_.write("/sys/class/net/eth0/carrier", "0\n");
    EXPECT_EQ((std::vector<std::string>{"0011110", "0001111"}), passes(1));
    EXPECT_NE(std::string::npos, printed_.find("No network cable inserted\n"));
    EXPECT_NE(std::string::npos, printed_.find("led_exit\n"));
}

TEST_F(LedLoop, CpuLedLightsOnLoadOrHeat)
{
    const struct {
        const char* load;
        const char* degrees;
        char lit;
    } cases[] = {{"81.00", "20", '1'}, {"80.00", "90", '0'}, {"80.00", "91", '1'}};
    for (const auto& c : cases) {
        load_and_temperature(c.load, c.degrees);
        EXPECT_EQ(c.lit, passes(1)[0][1]) << c.load << " " << c.degrees;
    }
}

TEST_F(LedLoop, TestModeLightsThreeLedsButNotPower)
{
    led_test = 2;
    oled_led_on = false;
    led_onboard = false;
    EXPECT_EQ((std::vector<std::string>{"1110000", "1110000", "0000000"}), passes(2));
}

TEST_F(LedLoop, VideoInputsLightTheVideoLed)
{
    const char* signal0 = "VI0:1920x1080@60\n";
    const char* signal1 = "VI1:1280x720@50\n";
    EXPECT_EQ('1', video_led("BRD25", signal0, "VI1:0@0\n"));
    EXPECT_EQ('0', video_led("BRD25", "VI0:0@0\n", signal1));  // no second input on this board
    EXPECT_EQ('1', video_led("BRD20", "VI0:0@0\n", signal1));
    EXPECT_EQ('0', video_led("BRD20", "VI0:0@0\n", "VI1:0@0\n"));
    EXPECT_EQ('0', video_led("BRD20", "VI0:1x1@\n", "VI1:0@0\n"));  // nine characters: no signal
    input_mode = 0;                                                 // the switch high: the HDMI input decides
    EXPECT_EQ('1', video_led("BRD20", "VI0:0@0\n", "VI1:0@0\n"));
}

}  // namespace
