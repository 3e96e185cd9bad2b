#include <gtest/gtest.h>

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

class PinSetup : public ::testing::Test {
protected:
    void SetUp() override
    {
        CaptureStdout quiet;
        hw_info[0] = '\0';
        Singleton<SoftwareConfig>::init();  // the defaults of a board without a table
        set(C::OLed_sml_SDINMUX, "12_0");
        set(C::OLed_sml_SCLKMUX, "12_1");
        set(C::OLed_sml_VCCMUX, "12_2");
        set(C::OLed_sml_GNDMUX, "12_3");
        set(C::kSwitch_gpio, "7_6");
    }

    void set(C::SoftWareConfigID id, const char* value)
    {
        Singleton<SoftwareConfig>::instance()->SetConfig(id, std::string(value));
    }

    // Every register write of the set-up on a SoC fresh from reset.
    Lines run(int kind, int switch_level = 0)
    {
        for (unsigned int* line : {&SDA, &SDA_H, &SCL, &SCL_H, &CS, &CS_H, &DC, &DC_H, &RES, &RES_H}) {
            *line = kUnset;
        }
        RegisterTrace trace;
        SimSoc::instance().set_input_level(7, 6, switch_level);
        oled_type = kind;
        input_mode = -1;
        oled_gpio_init();
        return trace.lines();
    }

    TempRoot root_;
};

}  // namespace

TEST_F(PinSetup, FourWireKindsRouteTheFiveBusLinesAndDriveNoLevel)
{
    for (int kind : {0, 3, 6}) {
        EXPECT_EQ(run(kind), (Lines{"120F007C 00000001", "12190400 00000004",  // data 4_2
                                    "120F0080 00000001", "12190400 0000000C",  // clock 4_3
                                    "120F0064 00000001", "12180400 00000020",  // chip select 3_5
                                    "120F0074 00000001", "12190400 0000000D",  // data/command 4_0
                                    "120F0078 00000001", "12190400 0000000F",  // reset 4_1
                                    "120F0100 00000001"}));                    // switch 7_6
        typedef std::vector<unsigned int> Words;
        EXPECT_EQ((Words{SDA, SCL, CS, DC, RES, SDA_H, SCL_H, CS_H, DC_H, RES_H}),
                  (Words{0x12190010, 0x12190020, 0x12180080, 0x12190004, 0x12190008, 0x04, 0x08, 0x20, 0x01, 0x02}));
    }
}

TEST_F(PinSetup, TwoWireKindsRouteDataAndClockAndPowerThePanel)
{
    for (int kind : {1, 4, 5}) {
        EXPECT_EQ(run(kind), (Lines{"120F01B4 00000000", "12210400 00000001",                       // data 12_0
                                    "120F00E0 00000000", "12210400 00000003",                       // clock 12_1
                                    "120F00E4 00000001", "12210400 00000007", "12210010 00000004",  // supply high
                                    "120F01B8 00000000", "12210400 0000000F", "12210020 00000000",  // ground low
                                    "120F0100 00000001"}));
        EXPECT_EQ(SDA, 0x12210004u);
        EXPECT_EQ(SCL_H, 0x02u);
        EXPECT_EQ(CS + DC + RES, 3 * kUnset);
    }
}

TEST_F(PinSetup, OtherKindsAndTextsWithoutAPinSetUpNothingForThem)
{
    EXPECT_EQ(run(2), Lines{"120F0100 00000001"});
    EXPECT_EQ(SDA + SCL + CS, 3 * kUnset);
    set(C::OLed_sml_SDINMUX, "40");   // no underscore
    set(C::OLed_sml_VCCMUX, "a_b");   // not numbers
    set(C::OLed_sml_GNDMUX, "25_0");  // beyond the last group
    set(C::kSwitch_gpio, "0");
    EXPECT_EQ(run(1), (Lines{"120F00E0 00000000", "12210400 00000002"}));
    EXPECT_EQ(SDA, kUnset);
    EXPECT_EQ(SCL, 0x12210008u);
}

TEST_F(PinSetup, ModeSwitchLowOrMissingMeansVideoInputs)
{
    const int low = (run(2, 0), input_mode);
    const int high = (run(2, 1), input_mode);
    EXPECT_EQ(std::make_pair(low, high), std::make_pair(1, 0));
    EXPECT_FALSE(SimSoc::instance().is_output(7, 6));  // sampled, never driven
    for (const char* none : {"0", "", "76"}) {
        set(C::kSwitch_gpio, none);
        EXPECT_EQ(run(2, 1), Lines{});
        EXPECT_EQ(input_mode, 1) << none;
    }
}
