#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "bus_lines.h"
#include "capture_stdout.h"
#include "pin_setup.h"
#include "register_trace.h"
#include "runtime_settings.h"
#include "singleton.h"
#include "soc.h"
#include "software_config.h"
#include "temp_root.h"

namespace {

typedef SoftwareConfig C;
typedef std::vector<std::string> Lines;

const unsigned int kUnset = 0xEEEE;

struct Line {
    unsigned int addr;
    unsigned int high;
    unsigned int low;
};

class PinSetup : public ::testing::Test {
protected:
    void SetUp() override
    {
        {
            CaptureStdout quiet;
            config_ = Singleton<SoftwareConfig>::instance();
        }
        const std::vector<std::string> defaults = SoftwareConfig::DefaultValues("");
        for (int id = 0; id < C::kConfigCount; ++id) {
            config_->SetConfig(static_cast<C::SoftWareConfigID>(id), defaults[id]);
        }
        set(C::OLed_sml_SDINMUX, "12_0");
        set(C::OLed_sml_SCLKMUX, "12_1");
        set(C::OLed_sml_VCCMUX, "12_2");
        set(C::OLed_sml_GNDMUX, "12_3");
        set(C::kSwitch_gpio, "7_6");
    }

    void set(C::SoftWareConfigID id, const char* value) { config_->SetConfig(id, std::string(value)); }

    // Runs the set-up for a panel kind on a SoC fresh from reset; returns
    // every register write it made.
    Lines run(int kind, int switch_level = 0)
    {
        unsigned int* globals[] = {&SDA, &SDA_H, &SDA_L, &SCL, &SCL_H, &SCL_L, &CS, &CS_H,
                                   &CS_L, &DC, &DC_H, &DC_L, &RES, &RES_H, &RES_L};
        for (unsigned int* global : globals) {
            *global = kUnset;
        }
        RegisterTrace trace;
        SimSoc::instance().set_input_level(7, 6, switch_level);
        oled_type = kind;
        input_mode = -1;
        oled_gpio_init();
        return trace.lines();
    }

    TempRoot root_;
    std::shared_ptr<SoftwareConfig> config_;
};

void expect_line(const Line& line, unsigned int addr, unsigned int high)
{
    EXPECT_EQ(line.addr, addr);
    EXPECT_EQ(line.high, high);
    EXPECT_EQ(line.low, addr == kUnset ? kUnset : 0u);
}

}  // namespace

TEST_F(PinSetup, FourWireKindsRouteTheFiveBusLinesAndDriveNoLevel)
{
    const Lines expected = {
        "120F007C 00000001", "12190400 00000004",  // data 4_2
        "120F0080 00000001", "12190400 0000000C",  // clock 4_3
        "120F0064 00000001", "12180400 00000020",  // chip select 3_5
        "120F0074 00000001", "12190400 0000000D",  // data/command 4_0
        "120F0078 00000001", "12190400 0000000F",  // reset 4_1
        "120F0100 00000001",                       // switch 7_6
    };
    for (int kind : {0, 3, 6}) {
        SCOPED_TRACE(kind);
        EXPECT_EQ(run(kind), expected);
        expect_line({SDA, SDA_H, SDA_L}, 0x12190010, 0x04);
        expect_line({SCL, SCL_H, SCL_L}, 0x12190020, 0x08);
        expect_line({CS, CS_H, CS_L}, 0x12180080, 0x20);
        expect_line({DC, DC_H, DC_L}, 0x12190004, 0x01);
        expect_line({RES, RES_H, RES_L}, 0x12190008, 0x02);
        EXPECT_FALSE(SimSoc::instance().is_output(12, 2));
    }
}

TEST_F(PinSetup, TwoWireKindsRouteDataAndClockAndPowerThePanel)
{
    const Lines expected = {
        "120F01B4 00000000", "12210400 00000001",                       // data 12_0
        "120F00E0 00000000", "12210400 00000003",                       // clock 12_1
        "120F00E4 00000001", "12210400 00000007", "12210010 00000004",  // supply 12_2 high
        "120F01B8 00000000", "12210400 0000000F", "12210020 00000000",  // ground 12_3 low
        "120F0100 00000001",                                            // switch 7_6
    };
    for (int kind : {1, 4, 5}) {
        SCOPED_TRACE(kind);
        EXPECT_EQ(run(kind), expected);
        expect_line({SDA, SDA_H, SDA_L}, 0x12210004, 0x01);
        expect_line({SCL, SCL_H, SCL_L}, 0x12210008, 0x02);
        expect_line({CS, CS_H, CS_L}, kUnset, kUnset);
        expect_line({DC, DC_H, DC_L}, kUnset, kUnset);
        expect_line({RES, RES_H, RES_L}, kUnset, kUnset);
        EXPECT_EQ(SimSoc::instance().level(12, 2), 1);
        EXPECT_TRUE(SimSoc::instance().is_output(12, 3));
        EXPECT_EQ(SimSoc::instance().level(12, 3), 0);
    }
}

TEST_F(PinSetup, OtherKindsSetUpNoDisplayPins)
{
    for (int kind : {2, 7, -1}) {
        SCOPED_TRACE(kind);
        EXPECT_EQ(run(kind), (Lines{"120F0100 00000001"}));
        expect_line({SDA, SDA_H, SDA_L}, kUnset, kUnset);
        expect_line({SCL, SCL_H, SCL_L}, kUnset, kUnset);
    }
}

TEST_F(PinSetup, ModeSwitchLowOrMissingMeansVideoInputs)
{
    run(2, 0);
    EXPECT_EQ(input_mode, 1);
    run(2, 1);
    EXPECT_EQ(input_mode, 0);
    EXPECT_FALSE(SimSoc::instance().is_output(7, 6));  // sampled, never driven

    set(C::kSwitch_gpio, "12_4");
    SimSoc::instance().set_input_level(12, 4, 1);
    EXPECT_EQ(run(2), (Lines{"120F01BC 00000000"}));
    EXPECT_EQ(input_mode, 1);  // run() resets the SoC: 12_4 reads low

    for (const char* none : {"0", "", "76"}) {
        set(C::kSwitch_gpio, none);
        EXPECT_EQ(run(2, 1), Lines{}) << none;
        EXPECT_EQ(input_mode, 1) << none;
    }
}

TEST_F(PinSetup, PinTextsThatNameNoPinAreSkipped)
{
    set(C::OLed_sml_SDINMUX, "40");    // no underscore
    set(C::OLed_sml_VCCMUX, "a_b");    // not numbers
    set(C::OLed_sml_GNDMUX, "25_0");   // beyond the last group
    set(C::kSwitch_gpio, "0");
    EXPECT_EQ(run(1), (Lines{"120F00E0 00000000", "12210400 00000002"}));
    expect_line({SDA, SDA_H, SDA_L}, kUnset, kUnset);
    expect_line({SCL, SCL_H, SCL_L}, 0x12210008, 0x02);
}
